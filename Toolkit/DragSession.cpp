// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DragSession.h"

#include "Toolkit/DragData.h"
#include "Toolkit/PromisedFile.h"

#include <QDrag>
#include <QEvent>
#include <QGuiApplication>
#include <QTimer>
#include <QWidget>

// The drag belongs to the application, for it outlives the view when another program is still asking for
// data.
DragSession::DragSession(QWidget &viewport, std::unique_ptr<DragData> data, const Image &image,
                         Qt::DropActions actions, Qt::DropAction defaultAction)
    : QObject(&viewport)
    , viewport_(viewport)
    , drag_(new QDrag(qApp))
    , data_(data.get())
    , actions_(actions)
    , defaultAction_(defaultAction)
{
    drag_->setMimeData(data.release());
    drag_->setPixmap(image.pixmap);
    drag_->setHotSpot(image.hotSpot);
    connect(drag_, &QDrag::actionChanged, this, [this](Qt::DropAction action) { currentAction_ = action; });
    viewport_.installEventFilter(this);
    QTimer::singleShot(0, qApp, [session = QPointer(this)] {
        if (session)
            session->run();
    });
}

DragSession::~DragSession()
{
    if (isRunning_)
        QDrag::cancel();
    else
        delete drag_;
}

bool DragSession::eventFilter(QObject *watched, QEvent *event)
{
    if (!isRunning_)
        return watched == &viewport_ &&
               (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease);
    // The file is to be there before the other program hears of the drop.
    if (event->type() == QEvent::MouseButtonRelease && currentAction_ != Qt::IgnoreAction &&
        isOverAnotherProgram())
        data_->drop();
    return false;
}

void DragSession::run()
{
    viewport_.removeEventFilter(this);
    deleteLater();
    // Released by now: nothing would ever end the drag.
    if (!QGuiApplication::mouseButtons().testFlag(Qt::LeftButton))
        return;
    isRunning_ = true;
    QTimer::singleShot(0, this, &DragSession::announce);
    const QPointer<DragSession> self(this);
    const Qt::DropAction action = drag_->exec(actions_, defaultAction_);
    if (!self)
        return;
    // Where the release of the mouse is not ours to see.
    if (action != Qt::IgnoreAction && isOverAnotherProgram())
        data_->drop();
    drag_ = nullptr;
    isRunning_ = false;
}

void DragSession::announce()
{
    // Installed after the filter that performs the drop, and so asked before it.
    qApp->installEventFilter(this);
    data_->announcePromise();
}

bool DragSession::isOverAnotherProgram() const
{
    return drag_ && !drag_->target();
}
