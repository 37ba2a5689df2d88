// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QWidgetAction>

QT_BEGIN_NAMESPACE
class QKeyEvent;
class QMenu;
QT_END_NAMESPACE

/// A menu's entry that holds a view with controls, and is worked with like every other entry.
///
/// A menu gives such a view the keyboard when the user comes to it by the arrow keys or Tab. From there the
/// arrows go among the controls, which stand in rows, and beyond the first and the last row to the menu's
/// other entries; Tab goes on to the next entry, by way of the controls that are stops of its own. The way
/// back leads by the same places: Up comes in at the last row, Backtab at the last stop. Return presses a
/// button as Space does. Controls that are disabled are passed over. A click beside the controls does not
/// choose the entry.
class MenuViewAction final : public QWidgetAction
{
public:
    using Rows = QList<QList<QWidget *>>;

    /// The menu that the action is added to owns \a view. \a rows are the controls in it, from the top.
    MenuViewAction(QWidget *view, Rows rows, QObject *parent);

    /// The control that gets the keyboard first; the first of all if none was set.
    void setEntrance(QWidget &control) { entrance_ = &control; }
    /// Has Tab come by \a control, too, which is one of the rows, after the entrance and earlier stops.
    void addTabStop(QWidget &control) { tabStops_.append(&control); }
    /// Gives it the keyboard, in the open menu.
    void enter();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QMenu *menu() const;
    void becomeCurrent();
    /// Where \a key, which the menu gets, comes in if it leads here.
    QWidget &wayIn(int key) const;
    bool passToMenu(QKeyEvent &event) const;
    bool handleKey(QWidget &control, QKeyEvent &event);
    bool moveInRow(QWidget &control, int columns);
    bool moveToRow(QWidget &control, int rows);
    bool moveToTabStop(QWidget &control, int stops);

    Rows rows_;
    QWidget *entrance_;
    /// Besides the entrance.
    QList<QWidget *> tabStops_;
};
