// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

/// What runs in the background is loaded by the program when it is needed: the command line would otherwise
/// wait twice as long for the libraries of windows, of which it has none. The code lies in the helper's
/// bundle, and exports one function.
namespace RunningCode {

/// Relative to the program's folder.
inline constexpr char path[] = "../PlugIns/QNBRunningHelper.so";

/// Runs the helper with the program's arguments, and returns what the program ends with.
using Run = int(int &argc, char **argv);
/// The name of the function that is exported.
inline constexpr char runName[] = "runInBackground";

} // namespace RunningCode
