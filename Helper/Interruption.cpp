// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Interruption.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace {

std::atomic<bool> requested = false;
int ends[2] = {-1, -1};

extern "C" void noteSignal(int)
{
    requested = true;
    // Full means that it can be read from already.
    [[maybe_unused]] const ssize_t written = ::write(ends[1], "", 1);
}

} // namespace

Interruption::Interruption()
{
    // Without it a wait is not cut short, that is all.
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) == -1)
        ends[0] = ends[1] = -1;
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = int(SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        // Whoever started this program with a signal ignored, like nohup, means it.
        if (::sigaction(number, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            ::sigaction(number, &action, nullptr);
    }
}

bool Interruption::isRequested() const
{
    return requested;
}

int Interruption::descriptor() const
{
    return ends[0];
}
