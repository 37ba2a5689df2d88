// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

QT_BEGIN_NAMESPACE
class QDBusMessage;
QT_END_NAMESPACE

/// Who wants to hear of which notification, shared between the threads.
class NotificationObservers
{
public:
    /// Calls \a handler on the calling thread's event loop from now on.
    void add(const QString &name, std::function<void()> handler);
    void notify(const QString &name);
    /// Calls nobody any more.
    void clear();

private:
    struct Observer
    {
        QString name;
        std::function<void()> handler;
        /// On the observer's thread; handlers not yet called are dropped with it.
        std::unique_ptr<QObject> context;
    };
    QMutex mutex_;
    std::vector<Observer> observers_;
};

/// The connection of one notification centre to its bus. Every call waits for the bus, so it lives on a
/// thread of its own. Connects on first use, and again when the bus has gone and come back.
class NotificationBus : public QObject
{
    Q_OBJECT
public:
    NotificationBus(QString address, std::shared_ptr<NotificationObservers> observers);
    ~NotificationBus() override;

    void post(const QString &name);
    void listen(const QString &name);
    /// False if something posted since the last round trip did not reach a bus, or the bus says nothing
    /// within \a timeout.
    bool roundTrip(std::chrono::milliseconds timeout);

private Q_SLOTS:
    void received(const QDBusMessage &signal);
    void disconnected();

private:
    bool connectToBus();
    bool subscribe(const QString &name);

    const QString address_;
    /// Among the names that the library keeps for the whole process.
    const QString connectionName_;
    const std::shared_ptr<NotificationObservers> observers_;
    std::optional<QDBusConnection> connection_;
    QSet<QString> names_;
    bool lostSome_ = false;
    bool isAbsenceTold_ = false;
    /// A bus that was silent is not asked again before.
    QDeadlineTimer silentUntil_;
    /// Runs only while there is somebody to listen for and no bus to listen to.
    QTimer reconnect_;
};
