// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/SessionBus.h"

#include <QDBusConnection>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QDBusPendingCallWatcher;
QT_END_NAMESPACE

/// The desktop's notifications, by `org.freedesktop.Notifications` on the session bus. For the thread that
/// made it; nothing here waits for the desktop but flush(). Without a bus, or with a desktop that does not
/// answer, nothing is shown.
class Notifications : public QObject
{
    Q_OBJECT
public:
    struct Action
    {
        /// Passed to the handler.
        QString key;
        QString title;
    };
    struct Notice
    {
        QString title;
        /// Plain text of one or more lines; names in it have gone through lineText().
        QString text;
        QList<Action> actions = {};
        /// Called on the event loop when the user chooses an action, as long as the notice is shown.
        std::function<void(const QString &key)> handler = {};
        /// Called on the event loop, or by show(), if it turns out that nobody shows it.
        std::function<void()> notShown = {};
    };

    explicit Notifications(QString busAddress = SessionBus::address());
    ~Notifications() override;

    void show(const Notice &notice);

    /// Waits until the desktop has taken everything that was shown; false if it did not all of it, or not
    /// within \a timeout.
    bool flush(std::chrono::milliseconds timeout);

private Q_SLOTS:
    void actionInvoked(uint id, const QString &key);
    void notificationClosed(uint id, uint reason);

private:
    bool connectToBus();
    void askForCapabilities();
    void send(const Notice &notice);
    void lose(const Notice &notice, const QString &reason);

    const QString busAddress_;
    /// Among the names that the library keeps for the whole process.
    const QString connectionName_;
    std::optional<QDBusConnection> bus_;
    /// What the desktop can do, once it has said so; those that wait for it.
    std::optional<QStringList> capabilities_;
    QList<Notice> waiting_;
    bool isAsking_ = false;
    int unanswered_ = 0;
    bool lostSome_ = false;
    QHash<uint, std::function<void(const QString &)>> handlers_;
};
