// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Platform/Files/InterveningLayer.h"

#include <cerrno>
#include <csignal>
#include <limits>
#include <unistd.h>

/// Makes the real calls, and counts them, until one that fails or ends the process.
class FailingFolderLayer : public InterveningLayer
{
public:
    static constexpr int never = std::numeric_limits<int>::max();

    /// The first call that fails, from 0, and how many do.
    int failingCall = never;
    int failures = 1;
    int errorNumber = EIO;
    /// At this call, instead of it, the process is killed.
    int killingCall = never;
    int calls = 0;

protected:
    bool fails() override
    {
        const int call = calls++;
        if (call == killingCall)
            ::kill(::getpid(), SIGKILL);
        if (call < failingCall || call - failingCall >= failures)
            return false;
        errno = errorNumber;
        return true;
    }
};
