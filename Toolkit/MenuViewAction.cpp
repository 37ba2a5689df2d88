// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/MenuViewAction.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMenu>
#include <algorithm>

namespace {

bool canBeUsed(const QWidget *control)
{
    return control->isEnabled();
}

} // namespace

MenuViewAction::MenuViewAction(QWidget *view, Rows rows, QObject *parent)
    : QWidgetAction(parent)
    , rows_(std::move(rows))
    , entrance_(rows_.constFirst().constFirst())
{
    setDefaultWidget(view);
    // Without a policy the menu would keep the keyboard to itself.
    view->setFocusPolicy(Qt::TabFocus);
    view->setFocusProxy(entrance_);
    view->installEventFilter(this);
    for (const QList<QWidget *> &row : std::as_const(rows_)) {
        for (QWidget *control : row)
            control->installEventFilter(this);
    }
}

void MenuViewAction::enter()
{
    becomeCurrent();
    entrance_->setFocus(Qt::TabFocusReason);
}

bool MenuViewAction::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == menu()) {
        // It moves the keyboard to the view without telling from where.
        if (event->type() == QEvent::KeyPress)
            defaultWidget()->setFocusProxy(&wayIn(static_cast<QKeyEvent &>(*event).key()));
        return QWidgetAction::eventFilter(watched, event);
    }
    const bool isView = watched == defaultWidget();
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        if (isView)
            return true;
        break;
    case QEvent::FocusIn:
        becomeCurrent();
        break;
    case QEvent::ParentChange:
        if (isView && menu())
            menu()->installEventFilter(this);
        break;
    case QEvent::KeyPress:
        if (!isView && handleKey(static_cast<QWidget &>(*watched), static_cast<QKeyEvent &>(*event)))
            return true;
        break;
    default:
        break;
    }
    return QWidgetAction::eventFilter(watched, event);
}

QMenu *MenuViewAction::menu() const
{
    return qobject_cast<QMenu *>(defaultWidget()->parentWidget());
}

/// From where the arrows lead on, also when the mouse brought the keyboard here.
void MenuViewAction::becomeCurrent()
{
    if (menu() && menu()->activeAction() != this)
        menu()->setActiveAction(this);
}

QWidget &MenuViewAction::wayIn(int key) const
{
    if (key == Qt::Key_Backtab) {
        const auto stop = std::find_if(tabStops_.crbegin(), tabStops_.crend(), canBeUsed);
        return stop == tabStops_.crend() ? *entrance_ : **stop;
    }
    const auto lastRow = std::find_if(rows_.crbegin(), rows_.crend(), [](const QList<QWidget *> &row) {
        return canBeUsed(row.constFirst());
    });
    if (key == Qt::Key_Up && lastRow != rows_.crend() && !lastRow->contains(entrance_))
        return *lastRow->constFirst();
    return *entrance_;
}

/// The menu goes on to another entry. Sent by hand, so that those see the key that the keyboard comes to.
bool MenuViewAction::passToMenu(QKeyEvent &event) const
{
    if (menu())
        QCoreApplication::sendEvent(menu(), &event);
    return true;
}

bool MenuViewAction::handleKey(QWidget &control, QKeyEvent &event)
{
    const int forwards = control.isRightToLeft() ? -1 : 1;
    switch (event.key()) {
    case Qt::Key_Left:
        return moveInRow(control, -forwards);
    case Qt::Key_Right:
        return moveInRow(control, forwards);
    case Qt::Key_Up:
    case Qt::Key_Down:
        return moveToRow(control, event.key() == Qt::Key_Up ? -1 : 1) || passToMenu(event);
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return moveToTabStop(control, event.key() == Qt::Key_Backtab ? -1 : 1) || passToMenu(event);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto *button = qobject_cast<QAbstractButton *>(&control); button && !event.isAutoRepeat())
            button->click();
        return true;
    default:
        return false;
    }
}

bool MenuViewAction::moveInRow(QWidget &control, int columns)
{
    for (const QList<QWidget *> &row : std::as_const(rows_)) {
        const qsizetype column = row.indexOf(&control);
        if (column >= 0)
            row[std::clamp<qsizetype>(column + columns, 0, row.size() - 1)]->setFocus(Qt::TabFocusReason);
    }
    return true;
}

/// False if there is no such row.
bool MenuViewAction::moveToRow(QWidget &control, int rows)
{
    for (qsizetype i = 0; i < rows_.size(); ++i) {
        const qsizetype column = rows_[i].indexOf(&control);
        if (column < 0)
            continue;
        for (qsizetype target = i + rows; target >= 0 && target < rows_.size(); target += rows) {
            QWidget *next = rows_[target][std::min(column, rows_[target].size() - 1)];
            if (!canBeUsed(next))
                continue;
            next->setFocus(Qt::TabFocusReason);
            return true;
        }
    }
    return false;
}

/// False if it is the next or the previous entry's turn.
bool MenuViewAction::moveToTabStop(QWidget &control, int stops)
{
    // What is no stop of its own is the entrance's.
    const QList<QWidget *> all = QList<QWidget *>{entrance_} + tabStops_;
    qsizetype target = std::max<qsizetype>(all.indexOf(&control), 0) + stops;
    while (target >= 0 && target < all.size() && !canBeUsed(all[target]))
        target += stops;
    if (target < 0 || target >= all.size())
        return false;
    all[target]->setFocus(stops > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}
