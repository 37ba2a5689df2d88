// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineView.h"

#include <QMenu>
#include <QPointer>

/// An outline in which Return starts and ends editing of the selected row, Ctrl+Delete asks the data source
/// to delete it, and a right click selects the row under the pointer before the menu shows.
///
/// Delete without Ctrl does nothing, so that a slip of the finger costs nothing.
class QNBOutlineView : public OutlineView
{
public:
    using OutlineView::OutlineView;

    /// The contextual menu, shown for a right click and for the keys that ask for it; not owned, and may be
    /// null.
    void setMenu(QMenu *menu) { menu_ = menu; }
    QMenu *menu() const { return menu_; }
    /// Shows the menu at the selected row, as the menu key does.
    void askForMenuByKey();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    bool isTypingIntoEditor() const;
    void selectRowAlone(const QPoint &point);
    QPoint menuPositionAtSelectedRow();

    QPointer<QMenu> menu_;
};
