// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/TrayWatch.h"

#include "Helper/Running/XConnection.h"
#include "Platform/SessionBus.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>

#include <cstdlib>
#include <utility>

namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString hostProperty = QStringLiteral("IsStatusNotifierHostRegistered");
/// The desktop may be starting.
constexpr std::chrono::seconds answerTimeout(25);
const QString hostSignal = QStringLiteral("StatusNotifierHostRegistered");

} // namespace

TrayWatch::TrayWatch(std::shared_ptr<SessionBus> bus, std::function<void(Tray tray)> appeared)
    : bus_(std::move(bus))
    , appeared_(std::move(appeared))
{
    if (XConnection::get())
        watchScreen();
    bus_->listen({watcherService, watcherPath, watcherService, hostSignal},
                 mailbox_.bound<const QDBusMessage &>([this](const QDBusMessage &) { askWatcher(); }));
    bus_->watchOwner(watcherService, mailbox_.bound<>([this] { askWatcher(); }));
}

TrayWatch::~TrayWatch()
{
    if (selectionAtom_ != 0)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void TrayWatch::askWatcher()
{
    if (!appeared_)
        return;
    QDBusMessage question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    question << watcherService << hostProperty;
    question.setAutoStartService(false);
    bus_->call(question, answerTimeout,
               mailbox_.bound<const QDBusMessage &>([this](const QDBusMessage &reply) {
                   if (qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant().toBool())
                       appear(Tray::OnBus);
                   else
                       lookAtScreen();
               }));
}

void TrayWatch::watchScreen()
{
    selectionAtom_ =
        XConnection::atom("_NET_SYSTEM_TRAY_S" + QByteArray::number(XConnection::screenNumber()));
    managerAtom_ = XConnection::atom("MANAGER");
    QCoreApplication::instance()->installNativeEventFilter(this);
}

void TrayWatch::lookAtScreen()
{
    if (selectionAtom_ == 0)
        return;
    xcb_connection_t *connection = XConnection::get();
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selectionAtom_),
                                      nullptr),
        &std::free);
    if (owner && owner->owner != XCB_NONE)
        appear(Tray::OnScreen);
}

bool TrayWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != XConnection::eventType)
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & ~XConnection::sentMask) != XCB_CLIENT_MESSAGE)
        return false;
    const auto *announcement = reinterpret_cast<const xcb_client_message_event_t *>(event);
    if (announcement->type == managerAtom_ && announcement->data.data32[1] == selectionAtom_)
        QMetaObject::invokeMethod(this, &TrayWatch::lookAtScreen, Qt::QueuedConnection);
    return false;
}

void TrayWatch::appear(Tray tray)
{
    // Once. What the handler needs may be destroyed by its end.
    if (const auto appeared = std::exchange(appeared_, {}))
        appeared(tray);
}
