// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QAbstractItemView;
QT_END_NAMESPACE

namespace EmptyState {

/// Draws \a text in the middle of a view that has no rows, in the palette's placeholder colour.
void paint(QAbstractItemView &view, const QString &text);

} // namespace EmptyState
