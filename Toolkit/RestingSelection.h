// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QAbstractItemView;
class QStyleOptionViewItem;
QT_END_NAMESPACE

/// What is selected in a view that the keyboard does not go to stands back, so that of two views side by side
/// the user sees which one the next key works on.
namespace RestingSelection {

/// Has \a option, one of \a view's, draw its selection in the colours that fit.
void apply(QStyleOptionViewItem &option, const QAbstractItemView &view);

} // namespace RestingSelection
