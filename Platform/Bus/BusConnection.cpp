// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/BusConnection.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>
#include <QThread>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcBus, "quenby.platform.bus", QtInfoMsg)

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

/// What the library says of the connection itself.
const QString localPath = QStringLiteral("/org/freedesktop/DBus/Local");
const QString localInterface = QStringLiteral("org.freedesktop.DBus.Local");

/// For a bus that has just been silent.
constexpr auto secondTimeout = 200ms;

/// Between two looks for a bus, or two questions to one that does not answer; each is twice as long as the
/// one before.
constexpr auto firstPause = 500ms;
constexpr auto longestPause = 30000ms;

bool areEqual(const QDBusMessage &one, const QDBusMessage &other)
{
    return one.path() == other.path() && one.interface() == other.interface() &&
           one.member() == other.member() && one.arguments() == other.arguments();
}

} // namespace

BusListener::BusListener(SessionBus::Signal signal, SessionBus::Received handler)
    : signal_(std::move(signal))
    , handler_(std::move(handler))
{
}

void BusListener::connectTo(QDBusConnection &connection)
{
    if (!connection.connect(signal_.service, signal_.path, signal_.interfaceName, signal_.name,
                            signal_.arguments, QString(), this, SLOT(received(QDBusMessage))))
        qCWarning(lcBus) << "not heard:" << signal_.name << connection.lastError().message();
}

void BusListener::received(const QDBusMessage &message)
{
    handler_(message);
}

BusConnection::BusConnection(QString address)
    : address_(std::move(address))
    , connectionName_(QStringLiteral("quenby-%1").arg(quintptr(this), 0, 16))
    , retry_(this)
    , pause_(firstPause)
{
    retry_.setSingleShot(true);
    connect(&retry_, &QTimer::timeout, this, &BusConnection::retry);
}

BusConnection::~BusConnection()
{
    qDeleteAll(findChildren<QDBusPendingCallWatcher *>());
    if (connection_) {
        connection_.reset();
        QDBusConnection::disconnectFromBus(connectionName_);
    }
}

void BusConnection::send(const QDBusMessage &signal)
{
    // What no bus can take fails on a connection that lasts; the library logs why.
    if (connectToBus() && (connection_->send(signal) || connection_->isConnected()))
        return;
    qCDebug(lcBus) << "waits for a bus:" << signal.member();
    if (std::none_of(unsent_.cbegin(), unsent_.cend(),
                     [&](const QDBusMessage &other) { return areEqual(signal, other); }))
        unsent_.append(signal);
    tryLater();
}

void BusConnection::call(const QDBusMessage &message, std::chrono::milliseconds timeout,
                         SessionBus::Received answered)
{
    if (!connectToBus()) {
        answered(QDBusMessage::createError(SessionBus::notSentError, QStringLiteral("There is no bus")));
        return;
    }
    ++unanswered_;
    auto *watcher = new QDBusPendingCallWatcher(connection_->asyncCall(message, int(timeout.count())), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, answered = std::move(answered)] {
                watcher->deleteLater();
                --unanswered_;
                answered(watcher->reply());
                endThreadIfDone();
            });
}

void BusConnection::listen(const SessionBus::Signal &signal, SessionBus::Received received)
{
    BusListener &listener =
        *listeners_.emplace_back(std::make_unique<BusListener>(signal, std::move(received)));
    // A new connection is told of every listener, before it is asked whether it has understood.
    if (connection_ && connection_->isConnected())
        listener.connectTo(*connection_);
    else
        connectToBus();
}

void BusConnection::watch(SessionBus::Changed changed)
{
    const State before = state_;
    watchers_.append(changed);
    connectToBus();
    // Else it is told when that is known, or has been.
    if (state_ == before && state_ != State::Unknown)
        changed(state_ == State::There ? connection_ : std::nullopt);
}

bool BusConnection::connectToBus(bool evenIfSilent)
{
    if (connection_ && connection_->isConnected())
        return true;
    if (connection_)
        leave();
    if (lookForBus(evenIfSilent))
        return true;
    tryLater();
    return false;
}

bool BusConnection::lookForBus(bool evenIfSilent)
{
    const bool wasSilent = !silentUntil_.hasExpired();
    if (wasSilent && !evenIfSilent)
        return false;

    // The library waits half a minute for a bus that says nothing, and the end of the process waits for the
    // library; so it only meets buses that have just answered.
    const BusProbe::Answer answer =
        BusProbe::ask(address_, wasSilent ? secondTimeout : SessionBus::answerTimeout);
    if (answer == BusProbe::Answer::Silence && !wasSilent)
        silentUntil_.setRemainingTime(pause_);
    if (answer == BusProbe::Answer::Yes) {
        connection_.emplace(QDBusConnection::connectToBus(address_, connectionName_));
        if (connection_->isConnected()) {
            beginUse();
            return true;
        }
        connection_.reset();
        QDBusConnection::disconnectFromBus(connectionName_);
    }
    if (state_ != State::Absent)
        qCInfo(lcBus) << "no bus at" << address_;
    tell(State::Absent);
    return false;
}

void BusConnection::beginUse()
{
    retry_.stop();
    connection_->connect({}, localPath, localInterface, QStringLiteral("Disconnected"), this,
                         SLOT(disconnected()));
    for (const auto &listener : listeners_)
        listener->connectTo(*connection_);
    for (const QDBusMessage &signal : std::exchange(unsent_, {}))
        send(signal);
    tellOnceUsed(SessionBus::answerTimeout);
}

void BusConnection::tellOnceUsed(std::chrono::milliseconds patience)
{
    // What was asked of the bus before is done when it answers.
    roundTrip(patience, [this, patience, name = connection_->baseService()](bool isAnswered) {
        if (isToEnd_ || !connection_ || connection_->baseService() != name)
            return;
        if (isAnswered) {
            pause_ = firstPause;
            tell(State::There);
        } else {
            tell(State::Absent);
            tellOnceUsed(std::min<std::chrono::milliseconds>(2 * patience, longestPause));
        }
    });
}

void BusConnection::leave()
{
    qCInfo(lcBus) << "the bus has gone:" << address_;
    connection_.reset();
    QDBusConnection::disconnectFromBus(connectionName_);
    tell(State::Absent);
}

void BusConnection::disconnected()
{
    connectToBus();
}

void BusConnection::tryLater()
{
    const bool isNeeded = !listeners_.empty() || !watchers_.empty() || !unsent_.empty();
    if (!isNeeded || isToEnd_ || retry_.isActive())
        return;
    retry_.start(pause_);
    pause_ = std::min<std::chrono::milliseconds>(2 * pause_, longestPause);
}

void BusConnection::retry()
{
    silentUntil_ = QDeadlineTimer();
    connectToBus();
}

void BusConnection::tell(State state)
{
    if (std::exchange(state_, state) == state)
        return;
    for (const SessionBus::Changed &changed : std::as_const(watchers_))
        changed(state == State::There ? connection_ : std::nullopt);
}

void BusConnection::roundTrip(std::chrono::milliseconds timeout,
                              const std::function<void(bool allTaken)> &done)
{
    // Somebody waits: the bus may answer by now.
    if (!connectToBus(true)) {
        done(false);
        return;
    }
    call(QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("GetId")), timeout,
         [done](const QDBusMessage &answer) { done(answer.type() == QDBusMessage::ReplyMessage); });
}

void BusConnection::endThreadWhenAnswered()
{
    isToEnd_ = true;
    endThreadIfDone();
}

void BusConnection::endThreadIfDone()
{
    if (isToEnd_ && unanswered_ == 0)
        thread()->quit();
}
