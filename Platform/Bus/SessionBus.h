// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/BusProbe.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QDBusConnection;
class QDBusMessage;
QT_END_NAMESPACE

/// The session bus, for everybody in the process who uses it: one connection, made when it is first needed
/// and used on a thread of its own. No function but flush(), close() and the destructor waits for the bus,
/// whatever it does.
///
/// A bus that is absent or silent is looked for again, with growing pauses, as long as somebody listens or
/// something is to be sent. The log has one line for each time that it was missed.
///
/// Functions may be called from any thread. What they are given is called on the bus's thread, where it must
/// not wait; a Mailbox brings it elsewhere.
class SessionBus
{
public:
    /// Signals on the bus; what is empty may be anything.
    struct Signal
    {
        QString service;
        QString path;
        QString interfaceName;
        QString name;
        /// The first arguments, which have to be strings.
        QStringList arguments = {};
    };
    using Received = std::function<void(const QDBusMessage &message)>;
    using Changed = std::function<void(const std::optional<QDBusConnection> &connection)>;

    /// A bus that is there answers within a millisecond or two; one that is asked is waited for so long.
    static constexpr std::chrono::milliseconds answerTimeout{1000};

    explicit SessionBus(QString address = BusProbe::address());
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// What call() answers with if its message was not sent, and will not be. Any other error may come after
    /// the message has arrived.
    inline static const QString notSentError = QStringLiteral("org.quenby.Error.NotSent");

    /// Sends \a signal once there is a bus. Of equal ones that wait for it one is sent. One that no bus can
    /// take, because of its names or arguments, is dropped with a line in the log.
    void send(const QDBusMessage &signal);

    /// Calls \a answered once, unless this object goes first, with the answer or an error. Without a bus, or
    /// with one that is silent, that is notSentError.
    void call(const QDBusMessage &message, std::chrono::milliseconds timeout, Received answered);

    /// Calls \a received for each such signal from now on, whenever there is a bus.
    void listen(const Signal &signal, Received received);

    /// What the bus says when the service \a name comes, goes or passes to another program: with its name,
    /// and with the owners before and now, which are empty where there is none.
    static Signal ownerChange(const QString &name);

    /// Calls \a changed as soon as it is known whether there is a bus, and then each time it comes or goes:
    /// with the connection, once the bus knows of everything listened for, or with none.
    void watch(Changed changed);

    /// The same with \a changed called when the owner of the service \a name may be another, or none.
    void watchOwner(const QString &name, const std::function<void()> &changed);

    /// Waits until the bus has taken everything sent, and knows of everything listened for, so far; false if
    /// it had not within \a timeout.
    bool flush(std::chrono::milliseconds timeout = answerTimeout);

    /// Gives what was sent, and calls that are not answered, a moment; then gives them up, and ends the
    /// thread. From now on nothing is sent, and nobody is called. The destructor does the same.
    void close();

private:
    class Private;
    std::unique_ptr<Private> d_;
};
