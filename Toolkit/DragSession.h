// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QPixmap>
#include <QPoint>
#include <QPointer>
#include <memory>

class DragData;
class QDrag;
class QWidget;

/// One drag that begins in a view, from the moment at which it is decided on until it is dropped.
///
/// A drag runs in an event loop of its own, in which anything may happen, the end of the view included. So it
/// does not run within the view's handling of the mouse but soon after; until then the view hears no
/// more of the mouse. It goes with its view, and that cancels it.
class DragSession final : public QObject
{
public:
    struct Image
    {
        QPixmap pixmap;
        QPoint hotSpot;
    };

    /// The mouse is pressed in \a viewport, which owns the session. The last is what is proposed first.
    DragSession(QWidget &viewport, std::unique_ptr<DragData> data, const Image &image,
                Qt::DropActions actions, Qt::DropAction defaultAction);
    ~DragSession() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void run();
    void announce();
    bool isOverAnotherProgram() const;

    QWidget &viewport_;
    /// Owns the data. Ours until it runs, Qt's from then on, null when it has ended.
    QPointer<QDrag> drag_;
    DragData *data_;
    Qt::DropActions actions_;
    Qt::DropAction defaultAction_;
    /// What would be done if the mouse were released now.
    Qt::DropAction currentAction_ = Qt::IgnoreAction;
    bool isRunning_ = false;
};
