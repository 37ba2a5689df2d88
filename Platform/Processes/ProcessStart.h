// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayList>

#include <spawn.h>
#include <vector>

/// How a child process begins, for posix_spawn(): none of its signals is blocked, ignored or caught by this
/// program's doing, and it is in a process group of its own, so that Ctrl-C in the terminal of this program
/// is not for it. Its standard streams are the caller's to add to the actions.
class ProcessStart
{
public:
    ProcessStart();
    ~ProcessStart();
    ProcessStart(const ProcessStart &) = delete;
    ProcessStart &operator=(const ProcessStart &) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    /// Arguments or assignments as posix_spawn() wants them; valid as long as \a words is.
    static std::vector<char *> pointersTo(QByteArrayList &words);
};
