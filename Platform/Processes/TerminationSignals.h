// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// SIGTERM, SIGINT and SIGHUP as calls on the main thread. They are kept from construction on, so that one
/// that comes while the program starts is not lost; after its end they are noted only, for the process is
/// about to end of itself, and not to be interrupted at it. One object in a process.
class TerminationSignals
{
public:
    TerminationSignals();
    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;

    /// From now on \a handler is called on the event loop for signals, also for those that came before.
    void handleWith(std::function<void()> handler);

    /// A signal has come for which no handler was called, also after the object's end. For a process that
    /// does not end after all.
    static bool hasUnhandled();

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};
