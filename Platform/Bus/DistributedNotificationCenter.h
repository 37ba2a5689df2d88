// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/Mailbox.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class SessionBus;

/// System-wide notifications: signals on the session bus with the path
/// `/org/quenby/DistributedNotificationCenter`, the interface `org.quenby.DistributedNotificationCenter` and
/// the notification's name as member, without arguments.
///
/// No call but flush() waits for the bus. Without a bus, or with one that does not answer, what is posted
/// waits for it to come, several notifications of one name as one. Notifications of one process arrive in the
/// order they were posted.
class DistributedNotificationCenter
{
public:
    explicit DistributedNotificationCenter(std::shared_ptr<SessionBus> bus);

    void postNotificationName(const QString &name);

    /// Calls \a handler on the event loop of the thread that made the centre for each notification \a name,
    /// from any process, for as long as the centre lives.
    void addObserver(const QString &name, const std::function<void()> &handler);

    /// Waits until the bus has taken everything posted, and knows of every observer added, so far; false if
    /// it had not within \a timeout.
    bool flush(std::chrono::milliseconds timeout = std::chrono::milliseconds(1000));

private:
    const std::shared_ptr<SessionBus> bus_;
    const Mailbox mailbox_;
};
