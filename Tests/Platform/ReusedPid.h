// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <functional>
#include <sys/types.h>

/// Process ids that are given a second time.
namespace ReusedPid {

/// Runs \a scenario in a process made for it, with a table of processes of its own where the system allows
/// that, and gives it the folder of the table. True if it returned true.
bool run(const std::function<bool(const QString &root)> &scenario);

/// Starts a process that waits to be ended; -1 on failure.
pid_t startWaiting();
/// The same, under an id that is free: asked for where the system allows that, else by using up all others.
pid_t startWaiting(pid_t wanted);

} // namespace ReusedPid
