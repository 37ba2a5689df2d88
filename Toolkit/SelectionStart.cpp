// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/SelectionStart.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QTreeView>

QModelIndex SelectionStart::lastRow(const QTreeView &view)
{
    const QAbstractItemModel &model = *view.model();
    QModelIndex last;
    for (int count = model.rowCount(); count > 0; count = view.isExpanded(last) ? model.rowCount(last) : 0)
        last = model.index(count - 1, 0, last);
    return last;
}

QModelIndex SelectionStart::rowForKey(const QTreeView &view, const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
    if (modifiers != Qt::NoModifier || view.selectionModel()->hasSelection())
        return {};
    switch (event.key()) {
    case Qt::Key_Down:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
        return view.model()->index(0, 0);
    case Qt::Key_Up:
    case Qt::Key_PageUp:
    case Qt::Key_End:
        return lastRow(view);
    default:
        return {};
    }
}
