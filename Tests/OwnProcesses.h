// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

/// Calls \a run and returns its result, the exit status of the test program. With QUENBY_TESTS_OWN_PROCESSES
/// in the environment, which CTest sets for tests that look at the processes of the user or end them, \a run
/// is called in a process namespace of its own, where there are no processes but those that it starts. Where
/// the system gives no namespace, \a run is called as it is, and that is printed. To be called while the
/// program has one thread.
int runInOwnProcesses(const std::function<int()> &run);
