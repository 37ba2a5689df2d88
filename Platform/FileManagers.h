// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <chrono>

/// The file managers of this desktop, all at once.
namespace FileManagers {

/// How long a plug-in may take to register itself.
inline constexpr std::chrono::milliseconds registrationTimeout{10000};

/// Makes the bundle \a plugin known to the file managers: its executable is run with the argument "register",
/// to write what each of them reads, and is ended if that takes too long. Nothing of this is waited for.
/// False, with a line in the log, if the plug-in could not be run.
///
/// No file manager is told anything. Most of them see at once what was written; those that read it only when
/// they start could be made to by quitting them, with all their windows and whatever goes on in these.
bool registerPlugin(const QString &plugin, std::chrono::milliseconds timeout = registrationTimeout);

} // namespace FileManagers
