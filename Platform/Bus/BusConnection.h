// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

/// Hands the signals of one kind to whoever listens for them.
class BusListener : public QObject
{
    Q_OBJECT

public:
    BusListener(SessionBus::Signal signal, SessionBus::Received handler);
    /// From now on \a connection passes them on.
    void connectTo(QDBusConnection &connection);

private Q_SLOTS:
    void received(const QDBusMessage &message);

private:
    const SessionBus::Signal signal_;
    const SessionBus::Received handler_;
};

/// The connection of a SessionBus, on the bus's thread. What a function of that class promises is done by the
/// one of the same name here.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    explicit BusConnection(QString address);
    ~BusConnection() override;

    void send(const QDBusMessage &signal);
    void call(const QDBusMessage &message, std::chrono::milliseconds timeout, SessionBus::Received answered);
    void listen(const SessionBus::Signal &signal, SessionBus::Received received);
    void watch(SessionBus::Changed changed);
    /// Calls \a done with false if there is no bus, or it says nothing within \a timeout.
    void roundTrip(std::chrono::milliseconds timeout, const std::function<void(bool allTaken)> &done);
    void endThreadWhenAnswered();

private Q_SLOTS:
    void disconnected();

private:
    enum class State { Unknown, Absent, There };

    /// A bus that has just been silent is asked again, for a shorter time, only if \a evenIfSilent. Tries
    /// again later if there is none.
    bool connectToBus(bool evenIfSilent = false);
    bool lookForBus(bool evenIfSilent);
    void beginUse();
    /// Tells who watches when the bus answers. Asks again after \a patience, with twice as much.
    void tellOnceUsed(std::chrono::milliseconds patience);
    void leave();
    void tryLater();
    void retry();
    void tell(State state);
    void endThreadIfDone();

    const QString address_;
    /// Among the names that the library keeps for the whole process.
    const QString connectionName_;
    std::optional<QDBusConnection> connection_;
    State state_ = State::Unknown;
    std::vector<std::unique_ptr<BusListener>> listeners_;
    QList<SessionBus::Changed> watchers_;
    /// None while there is a connection.
    QList<QDBusMessage> unsent_;
    int unanswered_ = 0;
    bool isToEnd_ = false;
    /// A bus that was silent is not asked again before.
    QDeadlineTimer silentUntil_;
    QTimer retry_;
    std::chrono::milliseconds pause_;
};
