// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <memory>

/// System-wide notifications: signals on the session bus with the path
/// `/org/quenby/DistributedNotificationCenter`, the interface `org.quenby.DistributedNotificationCenter` and
/// the notification's name as member, without arguments.
///
/// The bus is spoken to on a thread of its own: no call but flush() waits for it, and without a bus, or with
/// one that never answers, posting does nothing, at once. Notifications of one process arrive in the order
/// they were posted.
class DistributedNotificationCenter
{
public:
    /// The session bus of the environment.
    DistributedNotificationCenter();
    /// A private bus, for tests.
    explicit DistributedNotificationCenter(const QString &busAddress);
    /// Gives what was posted a moment (see flush()) to reach the bus.
    ~DistributedNotificationCenter();
    DistributedNotificationCenter(const DistributedNotificationCenter &) = delete;
    DistributedNotificationCenter &operator=(const DistributedNotificationCenter &) = delete;

    void postNotificationName(const QString &name);

    /// Calls \a handler on the calling thread's event loop for each notification \a name, from any process,
    /// for as long as the centre lives.
    void addObserver(const QString &name, std::function<void()> handler);

    /// Waits until the bus has taken everything posted, and knows of every observer added, so far; false if
    /// it had not within \a timeout.
    bool flush(std::chrono::milliseconds timeout = std::chrono::milliseconds(1000));

private:
    class Private;
    std::unique_ptr<Private> d_;
};
