// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

class QApplication;

/// The helper as it runs in the background: the presets in the tray and under the hot key, the settings as
/// they change, orders from other programs. Returns what the process ends with, at once if another one runs.
///
/// Before the application is made, a session bus that does not answer has to be out of the environment
/// (SessionBus::keepIfItAnswers()).
int runHelper(QApplication &application);
