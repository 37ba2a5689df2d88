// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QModelIndex>

QT_BEGIN_NAMESPACE
class QKeyEvent;
class QTreeView;
QT_END_NAMESPACE

/// The keys that move a selection, while there is none to be moved. A view has a current row even then, from
/// which it would go on: the first row would be out of reach of the keys that lead to it.
namespace SelectionStart {

/// The last row that can be scrolled to; invalid if there are no rows.
QModelIndex lastRow(const QTreeView &view);

/// The row to select: the first for the keys that lead down or to the beginning, the last for those that lead
/// up or to the end. Invalid for other keys, and if something is selected.
QModelIndex rowForKey(const QTreeView &view, const QKeyEvent &event);

} // namespace SelectionStart
