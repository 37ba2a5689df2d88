// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <chrono>
#include <functional>

/// The file managers of this desktop, all at once.
namespace FileManagers {

/// Whether a process of that name runs.
using IsRunning = std::function<bool(const QString &name)>;

/// How long a plug-in may take to register itself.
inline constexpr std::chrono::milliseconds registrationTimeout{10000};

/// Makes the bundle \a plugin known to the file managers: its executable is run with the argument "register",
/// to write what each of them reads, and once that has ended, or was ended because it took too long, those
/// that look for extensions only when they start are told to quit; the desktop starts them again when they
/// are needed. Nothing of this is waited for. False, with a line in the log, if the plug-in could not be run:
/// then nothing is told to anyone.
bool restart(const QString &plugin, const IsRunning &isRunning,
             std::chrono::milliseconds timeout = registrationTimeout);
/// The same among the processes of this system.
bool restart(const QString &plugin);

} // namespace FileManagers
