// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// What runs in the background, and the launcher, is loaded by the program when it is needed: the command
/// line would otherwise wait twice as long for the libraries of windows, of which it has none. The code lies
/// in the helper's bundle, and exports two functions.
namespace RunningCode {

/// Relative to the program's folder.
inline constexpr char path[] = "../PlugIns/QNBRunningHelper.so";

/// Runs the helper with the program's arguments, and returns what the program ends with.
using Run = int(int &argc, char **argv);
/// Shows the launcher for \a folders in a process that is not the helper, and returns what the program ends
/// with. \a program is the program's first argument. There may be no other application any more.
using RunLauncher = int(char *program, const QStringList &folders);

/// The names of the functions that are exported.
inline constexpr char runName[] = "runInBackground";
inline constexpr char runLauncherName[] = "runLauncher";

} // namespace RunningCode
