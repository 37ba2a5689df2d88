// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <functional>

/// Calls a function when the process ends in the middle of its work: by exit() on the thread that made this,
/// which is what libraries do when the display has gone. One object in a thread.
class ExitHandler
{
public:
    /// \a handler is called at most once, before anything static is destroyed; nothing that waits on the
    /// stack below it goes on any more. From then on the process has \a limit to end by itself.
    ExitHandler(std::function<void()> handler, std::chrono::seconds limit);
    /// The ordinary way out: from now on exit() calls nothing.
    ~ExitHandler();
    ExitHandler(const ExitHandler &) = delete;
    ExitHandler &operator=(const ExitHandler &) = delete;
};
