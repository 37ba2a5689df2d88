// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayList>
#include <functional>

/// A child that is a copy of the test, for what a process cannot take back.
namespace ForkedProcess {

/// Runs \a work in a child and waits for it; failed expectations there count here too.
void run(const std::function<void()> &work);
/// The same as a user who is not the administrator: this one, or else nobody. Files of that user's are \a
/// folders.
void runAsOrdinaryUser(const QByteArrayList &folders, const std::function<void()> &work);
/// Whether the child was ended by SIGKILL, and not by returning from \a work.
bool isKilled(const std::function<void()> &work);

} // namespace ForkedProcess
