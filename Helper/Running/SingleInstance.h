// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/Mailbox.h"
#include "Platform/Files/FileLock.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class SessionBus;

/// Sees to it that one helper runs for each user: by a lock in the runtime folder, and by the helper's name
/// on the session bus once there is one. Each alone would do; a second helper may have come to know only one
/// of them.
class SingleInstance
{
public:
    /// \a name is the one on the bus.
    SingleInstance(std::shared_ptr<SessionBus> bus, const QString &name);
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /// Whether this is the one by the lock; it stays so until release(). \a runtimeFolder may be empty.
    bool acquire(const QString &runtimeFolder);
    /// Takes the name on the bus. Calls \a isTaken, on the event loop, if another helper has it.
    void claimName(const std::function<void()> &isTaken);
    /// From now on another one may start.
    void release();

private:
    const std::shared_ptr<SessionBus> bus_;
    const QString name_;
    std::optional<FileLock> lock_;
    const Mailbox mailbox_;
};
