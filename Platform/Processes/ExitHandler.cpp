// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ExitHandler.h"

#include <csignal>
#include <unistd.h>
#include <utility>

namespace {

/// What is to be done at the exit. Local to the thread, because exit() destroys that before all that is
/// static; a function of atexit() would find destroyed what was first used after it was registered.
class Ending
{
public:
    ~Ending()
    {
        if (!handler)
            return;
        std::signal(SIGALRM, SIG_DFL);
        ::alarm(unsigned(limit.count()));
        std::exchange(handler, {})();
    }

    std::function<void()> handler;
    std::chrono::seconds limit{};
};

thread_local Ending ending;

} // namespace

ExitHandler::ExitHandler(std::function<void()> handler, std::chrono::seconds limit)
{
    ending.handler = std::move(handler);
    ending.limit = limit;
}

ExitHandler::~ExitHandler()
{
    ending.handler = {};
}
