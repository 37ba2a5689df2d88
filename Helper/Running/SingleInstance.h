// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/FileLock.h"

#include <QString>

#include <optional>

/// Sees to it that one helper runs for each user: by a lock in the runtime folder, and by the helper's name
/// on the session bus where there is one. Each alone would do; a second helper may have come to know only one
/// of them.
class SingleInstance
{
public:
    SingleInstance() = default;
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /// Whether this is the one; it stays so until release(). \a runtimeFolder may be empty. The session bus
    /// is used if \a hasBus.
    bool acquire(const QString &runtimeFolder, bool hasBus);
    /// From now on another one may start.
    void release();

private:
    std::optional<FileLock> lock_;
    bool hasName_ = false;
};
