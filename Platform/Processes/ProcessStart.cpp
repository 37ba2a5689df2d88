// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ProcessStart.h"

#include <csignal>

ProcessStart::ProcessStart()
{
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
}

ProcessStart::~ProcessStart()
{
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
}

std::vector<char *> ProcessStart::pointersTo(QByteArrayList &words)
{
    std::vector<char *> pointers;
    pointers.reserve(static_cast<std::size_t>(words.size()) + 1);
    for (QByteArray &word : words)
        pointers.push_back(word.data());
    // The end of the list.
    pointers.push_back(nullptr);
    return pointers;
}
