// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/TrayWatch.h"

#include "Helper/Running/XConnection.h"
#include "Platform/Bus/SessionBus.h"

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
const QString lastHostSignal = QStringLiteral("StatusNotifierHostUnregistered");

} // namespace

TrayWatch::TrayWatch(std::shared_ptr<SessionBus> bus, std::function<void(std::optional<Tray> tray)> changed)
    : bus_(std::move(bus))
    , changed_(std::move(changed))
{
    if (XConnection::get())
        watchScreen();
    for (const QString &signal : {hostSignal, lastHostSignal})
        bus_->listen({watcherService, watcherPath, watcherService, signal},
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
    QDBusMessage question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    question << watcherService << hostProperty;
    question.setAutoStartService(false);
    bus_->call(question, answerTimeout,
               mailbox_.bound<const QDBusMessage &>([this](const QDBusMessage &reply) {
                   isOnBus_ = qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant().toBool();
                   tell();
               }));
}

void TrayWatch::watchScreen()
{
    selectionAtom_ =
        XConnection::atom("_NET_SYSTEM_TRAY_S" + QByteArray::number(XConnection::screenNumber()));
    managerAtom_ = XConnection::atom("MANAGER");
    QCoreApplication::instance()->installNativeEventFilter(this);
}

bool TrayWatch::isOnScreen()
{
    if (selectionAtom_ == 0)
        return false;
    xcb_connection_t *connection = XConnection::get();
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selectionAtom_),
                                      nullptr),
        &std::free);
    trayWindow_ = owner ? owner->owner : XCB_NONE;
    if (trayWindow_ == XCB_NONE)
        return false;
    // To hear of its end. The library asks for the same.
    const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, trayWindow_, XCB_CW_EVENT_MASK, &events);
    return true;
}

void TrayWatch::tell()
{
    std::optional<Tray> tray;
    if (isOnBus_.value_or(false))
        tray = Tray::OnBus;
    else if (isOnScreen())
        tray = Tray::OnScreen;
    else if (!isOnBus_)
        return;
    if (std::exchange(hasTold_, true) && tray == told_)
        return;
    told_ = tray;
    changed_(tray);
}

bool TrayWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != XConnection::eventType)
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const int kind = event->response_type & ~XConnection::sentMask;
    bool isAboutTray = false;
    if (kind == XCB_CLIENT_MESSAGE) {
        const auto *announcement = reinterpret_cast<const xcb_client_message_event_t *>(event);
        isAboutTray = announcement->type == managerAtom_ && announcement->data.data32[1] == selectionAtom_;
    } else if (kind == XCB_DESTROY_NOTIFY) {
        isAboutTray = reinterpret_cast<const xcb_destroy_notify_event_t *>(event)->window == trayWindow_;
    }
    if (isAboutTray)
        QMetaObject::invokeMethod(this, &TrayWatch::tell, Qt::QueuedConnection);
    return false;
}
