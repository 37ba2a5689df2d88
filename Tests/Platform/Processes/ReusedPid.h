// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <functional>
#include <sys/types.h>

/// Process ids that are given a second time.
namespace ReusedPid {

/// A process that waits to be ended.
struct Waiting
{
    /// The folder of the table that shows it.
    QString table;
    pid_t pid = -1;
    /// Ends it, and gives its id to another that waits, started in a later tick of the kernel's clock. Once;
    /// false on failure.
    std::function<bool()> replace;
};
using Scenario = std::function<bool(const Waiting &process)>;

/// Runs \a scenario in a process made for it, true if it returned true: in a table of processes of its own,
/// where ids can be chosen; if the system refuses that, as runWithLinks() does. To use up ids until one comes
/// again takes minutes where there are millions.
bool run(const Scenario &scenario);

/// The same as any user can on any system: two processes, and a table in which the folder under the id of the
/// second is first that of the first.
bool runWithLinks(const Scenario &scenario);

} // namespace ReusedPid
