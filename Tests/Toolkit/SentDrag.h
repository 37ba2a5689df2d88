// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>

/// A drag over a view, as the events that the view gets of it. It comes from nowhere: what the view itself
/// begins to drag is another matter.
class SentDrag
{
public:
    explicit SentDrag(QAbstractItemView &view)
        : viewport_(*view.viewport())
    {
    }

    QMimeData data;
    Qt::DropActions possible = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;

    /// Has to come first, and to be accepted: a view hears nothing else of a drag that it refuses there.
    bool enter(const QPoint &point = {})
    {
        QDragEnterEvent event(point, possible, &data, Qt::LeftButton, modifiers);
        isInside_ = send(event) != Qt::IgnoreAction;
        return isInside_;
    }
    /// What would be done, Qt::IgnoreAction if it is refused.
    Qt::DropAction move(const QPoint &point)
    {
        if (!isInside_ && !enter(point))
            return Qt::IgnoreAction;
        QDragMoveEvent event(point, possible, &data, Qt::LeftButton, modifiers);
        return send(event);
    }
    /// What was done.
    Qt::DropAction drop(const QPoint &point)
    {
        if (!isInside_ && !enter(point))
            return Qt::IgnoreAction;
        isInside_ = false;
        QDropEvent event(point, possible, &data, Qt::LeftButton, modifiers);
        return send(event);
    }
    void leave()
    {
        isInside_ = false;
        QDragLeaveEvent event;
        QApplication::sendEvent(&viewport_, &event);
    }

private:
    Qt::DropAction send(QDropEvent &event)
    {
        event.ignore();
        QApplication::sendEvent(&viewport_, &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }

    QWidget &viewport_;
    bool isInside_ = false;
};
