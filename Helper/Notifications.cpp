// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Notifications.h"

#include "Platform/LineText.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QTimer>
#include <QVariantMap>

#include <atomic>
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
/// A bus that is there answers within a millisecond or two.
constexpr auto busTimeout = 300ms;
/// In milliseconds. The desktop's program for notifications may have to be started first.
constexpr int answerTimeout = 5000;

QString nextConnectionName()
{
    static std::atomic<unsigned> number;
    return QStringLiteral("quenby-notifications-%1").arg(++number);
}

QDBusMessage call(const QString &method)
{
    return QDBusMessage::createMethodCall(service, objectPath, interfaceName, method);
}

} // namespace

Notifications::Notifications(QString busAddress)
    : busAddress_(std::move(busAddress))
    , connectionName_(nextConnectionName())
{
}

Notifications::~Notifications()
{
    bus_.reset();
    QDBusConnection::disconnectFromBus(connectionName_);
}

bool Notifications::connectToBus()
{
    if (bus_ && bus_->isConnected())
        return true;
    bus_.reset();
    QDBusConnection::disconnectFromBus(connectionName_);
    capabilities_.reset();
    handlers_.clear();
    // The library waits half a minute for a bus that says nothing.
    if (SessionBus::ask(busAddress_, busTimeout) != SessionBus::Answer::Yes)
        return false;
    bus_ = QDBusConnection::connectToBus(busAddress_, connectionName_);
    if (!bus_->isConnected())
        return false;
    bus_->connect(service, objectPath, interfaceName, actionInvokedSignal, this,
                  SLOT(actionInvoked(uint, QString)));
    bus_->connect(service, objectPath, interfaceName, closedSignal, this,
                  SLOT(notificationClosed(uint, uint)));
    return true;
}

void Notifications::show(const Notice &notice)
{
    if (!connectToBus()) {
        lose(notice, QStringLiteral("there is no bus"));
        return;
    }
    if (capabilities_) {
        send(notice);
        return;
    }
    waiting_.append(notice);
    if (!isAsking_)
        askForCapabilities();
}

void Notifications::askForCapabilities()
{
    isAsking_ = true;
    auto *watcher = new QDBusPendingCallWatcher(
        bus_->asyncCall(call(QStringLiteral("GetCapabilities")), answerTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        isAsking_ = false;
        const QDBusPendingReply<QStringList> reply = *watcher;
        if (reply.isError()) {
            for (const Notice &notice : std::exchange(waiting_, {}))
                lose(notice, reply.error().message());
            return;
        }
        capabilities_ = reply.value();
        const QList<Notice> notices = std::exchange(waiting_, {});
        for (const Notice &notice : notices)
            send(notice);
    });
}

void Notifications::send(const Notice &notice)
{
    QStringList actions;
    if (notice.handler && capabilities_->contains(actionsCapability)) {
        for (const Action &action : notice.actions)
            actions << action.key << action.title;
    }
    const QString lines = linesText(notice.text);
    const QString text = capabilities_->contains(markupCapability) ? lines.toHtmlEscaped() : lines;
    constexpr uint replacesNone = 0;
    QDBusMessage message = call(QStringLiteral("Notify"));
    message << shownProgram << replacesNone << shownIcon << lineText(notice.title) << text << actions
            << QVariantMap{{desktopEntryHint, desktopEntry}} << desktopsOwnTimeout;

    ++unanswered_;
    auto *watcher = new QDBusPendingCallWatcher(bus_->asyncCall(message, answerTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, notice] {
        watcher->deleteLater();
        --unanswered_;
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError()) {
            lose(notice, reply.error().message());
        } else if (notice.handler) {
            handlers_.insert(reply.value(), notice.handler);
        }
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
    const auto isDone = [this] { return !isAsking_ && unanswered_ == 0; };
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

void Notifications::notificationClosed(uint id, uint)
{
    handlers_.remove(id);
}
