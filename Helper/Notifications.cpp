// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Notifications.h"

#include "Platform/Bus/SessionBus.h"
#include "Platform/LineText.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QTimer>
#include <QVariantMap>

#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcNotifications, "quenby.helper.notifications")

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
const QString interfaceName = service;
const QString actionInvokedSignal = QStringLiteral("ActionInvoked");
const QString closedSignal = QStringLiteral("NotificationClosed");

const QString actionsCapability = QStringLiteral("actions");
const QString markupCapability = QStringLiteral("body-markup");

const QString shownProgram = QStringLiteral("Quenby");
const QString shownIcon = QStringLiteral("quenby");
const QString desktopEntryHint = QStringLiteral("desktop-entry");
const QString desktopEntry = QStringLiteral(QUENBY_IDENTIFIER);

/// How long a notice is shown is the desktop's to say.
constexpr int desktopsOwnTimeout = -1;
/// The desktop's program for notifications may have to be started first.
constexpr auto answerTimeout = 5000ms;

QDBusMessage callOf(const QString &method)
{
    return QDBusMessage::createMethodCall(service, objectPath, interfaceName, method);
}

} // namespace

Notifications::Notifications(std::shared_ptr<SessionBus> bus)
    : bus_(std::move(bus))
{
    const auto listen = [this](const QString &signal, const SessionBus::Received &received) {
        bus_->listen({service, objectPath, interfaceName, signal},
                     mailbox_.bound<const QDBusMessage &>(received));
    };
    listen(actionInvokedSignal, [this](const QDBusMessage &signal) {
        actionInvoked(signal.arguments().value(0).toUInt(), signal.arguments().value(1).toString());
    });
    listen(closedSignal,
           [this](const QDBusMessage &signal) { handlers_.remove(signal.arguments().value(0).toUInt()); });
}

void Notifications::show(const Notice &notice)
{
    // Another program may show them today than yesterday.
    call(callOf(QStringLiteral("GetCapabilities")), notice, [this, notice](const QDBusMessage &reply) {
        send(notice, reply.arguments().value(0).toStringList());
    });
}

void Notifications::call(const QDBusMessage &message, const Notice &notice,
                         const std::function<void(const QDBusMessage &reply)> &then)
{
    ++unanswered_;
    bus_->call(message, answerTimeout,
               mailbox_.bound<const QDBusMessage &>([this, notice, then](const QDBusMessage &reply) {
                   if (reply.type() == QDBusMessage::ErrorMessage)
                       lose(notice, reply.errorMessage());
                   else
                       then(reply);
                   --unanswered_;
               }));
}

void Notifications::send(const Notice &notice, const QStringList &capabilities)
{
    QStringList actions;
    if (notice.handler && capabilities.contains(actionsCapability)) {
        for (const Action &action : notice.actions)
            actions << action.key << action.title;
    }
    const QString lines = linesText(notice.text);
    const QString text = capabilities.contains(markupCapability) ? lines.toHtmlEscaped() : lines;
    constexpr uint replacesNone = 0;
    QDBusMessage message = callOf(QStringLiteral("Notify"));
    message << shownProgram << replacesNone << shownIcon << lineText(notice.title) << text << actions
            << QVariantMap{{desktopEntryHint, desktopEntry}} << desktopsOwnTimeout;
    call(message, notice, [this, notice](const QDBusMessage &reply) {
        // The number may have been another notice's before the desktop's program started again.
        handlers_.insert(reply.arguments().value(0).toUInt(), notice.handler);
    });
}

void Notifications::lose(const Notice &notice, const QString &reason)
{
    qCInfo(lcNotifications) << "not shown:" << notice.title << reason;
    lostSome_ = true;
    if (notice.notShown)
        notice.notShown();
}

bool Notifications::flush(std::chrono::milliseconds timeout)
{
    const auto isDone = [this] { return unanswered_ == 0; };
    const QDeadlineTimer deadline(timeout);
    while (!isDone() && !deadline.hasExpired()) {
        QEventLoop loop;
        QTimer::singleShot(int(deadline.remainingTime()), &loop, &QEventLoop::quit);
        loop.processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::ExcludeUserInputEvents);
    }
    return isDone() && !std::exchange(lostSome_, false);
}

void Notifications::actionInvoked(uint id, const QString &key)
{
    // A copy: the handler may show another notice.
    if (const auto handler = handlers_.value(id))
        handler(key);
}
