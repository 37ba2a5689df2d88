// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/Mailbox.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

QT_BEGIN_NAMESPACE
class QDBusMessage;
QT_END_NAMESPACE
class SessionBus;

/// The desktop's notifications, by `org.freedesktop.Notifications` on the session bus. For the thread that
/// made it; nothing here waits for the desktop but flush(). Without a bus, or with a desktop that does not
/// answer, nothing is shown.
class Notifications
{
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
        /// Called on the event loop if it turns out that nobody shows it.
        std::function<void()> notShown = {};
    };

    explicit Notifications(std::shared_ptr<SessionBus> bus);

    void show(const Notice &notice);

    /// Waits until the desktop has taken everything that was shown; false if it did not all of it, or not
    /// within \a timeout.
    bool flush(std::chrono::milliseconds timeout);

private:
    void call(const QDBusMessage &message, const Notice &notice,
              const std::function<void(const QDBusMessage &reply)> &then);
    void send(const Notice &notice, const QStringList &capabilities);
    void lose(const Notice &notice, const QString &reason);
    void actionInvoked(uint id, const QString &key);

    const std::shared_ptr<SessionBus> bus_;
    int unanswered_ = 0;
    bool lostSome_ = false;
    QHash<uint, std::function<void(const QString &)>> handlers_;
    const Mailbox mailbox_;
};
