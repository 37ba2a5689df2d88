// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>

/// How long a process may take to end while what it was creating is undone: that takes less than to create.
inline constexpr std::chrono::seconds undoLimit{60};

/// The helper as it runs in the background: the presets in the tray and under the hot key, the settings as
/// they change, orders from other programs. Returns what the process ends with, at once if another one runs;
/// or HelperSession::beginAnewCode.
///
/// The application, a QApplication, has to be there; and BusProbe::keepLibraryFromWaiting() has to be called
/// before it is made.
int runHelper();
