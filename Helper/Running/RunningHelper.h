// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

class QApplication;

/// The helper as it runs in the background: the presets in the tray and under the hot key, the settings as
/// they change, orders from other programs. Returns what the process ends with, at once if another one runs;
/// or HelperSession::beginAnewCode.
///
/// BusProbe::keepLibraryFromWaiting() has to be called before the application is made.
int runHelper(QApplication &application);
