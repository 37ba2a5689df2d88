// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/NotificationBus.h"

#include "Platform/SessionBus.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QLoggingCategory>
#include <QMutexLocker>

#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcNotifications, "quenby.platform.notifications")

const QString objectPath = QStringLiteral("/org/quenby/DistributedNotificationCenter");
const QString interfaceName = QStringLiteral("org.quenby.DistributedNotificationCenter");

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

/// What the library says of the connection itself.
const QString localPath = QStringLiteral("/org/freedesktop/DBus/Local");
const QString localInterface = QStringLiteral("org.freedesktop.DBus.Local");

constexpr auto answerTimeout = 1000ms;
constexpr auto silencePause = 5000ms;
constexpr auto reconnectInterval = 2000ms;

} // namespace

void NotificationObservers::add(const QString &name, std::function<void()> handler)
{
    const QMutexLocker locker(&mutex_);
    observers_.push_back({name, std::move(handler), std::make_unique<QObject>()});
}

void NotificationObservers::notify(const QString &name)
{
    const QMutexLocker locker(&mutex_);
    for (const Observer &observer : observers_) {
        if (observer.name == name)
            QMetaObject::invokeMethod(observer.context.get(), observer.handler, Qt::QueuedConnection);
    }
}

void NotificationObservers::clear()
{
    const QMutexLocker locker(&mutex_);
    observers_.clear();
}

NotificationBus::NotificationBus(QString address, std::shared_ptr<NotificationObservers> observers)
    : address_(std::move(address))
    , connectionName_(QStringLiteral("quenby-notifications-%1").arg(quintptr(this), 0, 16))
    , observers_(std::move(observers))
    , reconnect_(this)
{
    reconnect_.setInterval(reconnectInterval);
    connect(&reconnect_, &QTimer::timeout, this, &NotificationBus::connectToBus);
}

NotificationBus::~NotificationBus()
{
    if (connection_) {
        connection_.reset();
        QDBusConnection::disconnectFromBus(connectionName_);
    }
}

bool NotificationBus::connectToBus()
{
    if (connection_ && connection_->isConnected())
        return true;
    if (connection_) {
        qCInfo(lcNotifications) << "the bus has gone:" << address_;
        connection_.reset();
        QDBusConnection::disconnectFromBus(connectionName_);
    }
    if (!silentUntil_.hasExpired())
        return false;

    // The library waits half a minute for a bus that says nothing, and the end of the process waits for the
    // library; so it only meets buses that have just answered.
    const SessionBus::Answer answer = SessionBus::ask(address_, answerTimeout);
    if (answer == SessionBus::Answer::Silence)
        silentUntil_.setRemainingTime(silencePause);
    if (answer != SessionBus::Answer::Yes) {
        // Once, however often it is looked for.
        if (!std::exchange(isAbsenceTold_, true))
            qCInfo(lcNotifications) << "no bus at" << address_;
        return false;
    }
    isAbsenceTold_ = false;
    connection_.emplace(QDBusConnection::connectToBus(address_, connectionName_));
    bool everythingSubscribed = connection_->isConnected();
    for (const QString &name : std::as_const(names_))
        everythingSubscribed = everythingSubscribed && subscribe(name);
    if (everythingSubscribed) {
        connection_->connect({}, localPath, localInterface, QStringLiteral("Disconnected"), this,
                             SLOT(disconnected()));
        reconnect_.stop();
    }
    return everythingSubscribed;
}

void NotificationBus::post(const QString &name)
{
    if (!connectToBus() || !connection_->send(QDBusMessage::createSignal(objectPath, interfaceName, name))) {
        qCInfo(lcNotifications) << "not posted:" << name;
        lostSome_ = true;
    }
}

void NotificationBus::listen(const QString &name)
{
    if (names_.contains(name))
        return;
    names_.insert(name);
    // Connecting subscribes to every name.
    const bool isSubscribed = connection_ && connection_->isConnected() ? subscribe(name) : connectToBus();
    if (!isSubscribed)
        reconnect_.start();
}

void NotificationBus::disconnected()
{
    if (!names_.isEmpty() && !connectToBus())
        reconnect_.start();
}

bool NotificationBus::subscribe(const QString &name)
{
    const bool subscribed =
        connection_->connect({}, objectPath, interfaceName, name, this, SLOT(received(QDBusMessage)));
    if (!subscribed)
        qCWarning(lcNotifications) << "not heard:" << name << connection_->lastError().message();
    return subscribed;
}

bool NotificationBus::roundTrip(std::chrono::milliseconds timeout)
{
    const bool lostSome = std::exchange(lostSome_, false);
    if (lostSome || !connectToBus())
        return false;
    const QDBusMessage question =
        QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("GetId"));
    const QDBusMessage answer = connection_->call(question, QDBus::Block, int(timeout.count()));
    return answer.type() == QDBusMessage::ReplyMessage;
}

void NotificationBus::received(const QDBusMessage &signal)
{
    observers_->notify(signal.member());
}
