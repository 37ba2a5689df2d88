// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <sys/types.h>

/// The manager of the windows on the X11 screen that the environment names. Where there is none, or none that
/// follows the desktops' conventions, nothing is found and nothing is done, at once.
///
/// Which process a window is of is what the window says, and only believed of windows of this machine.
namespace WindowManager {

/// The process of the window that has the focus; none if there is no such window, or it does not say.
std::optional<pid_t> activeProcess();

enum class Windows {
    All,
    /// The topmost of them.
    Front,
};

/// Asks that the windows of the process be raised, in the order that they have, and the topmost of them get
/// the focus. False if it has none there, or nobody who could do it.
bool activateProcess(pid_t pid, Windows windows);

/// The same for one window, by its id on the screen, that the user has asked for and that is shown already. A
/// manager may refuse what a program asks for by itself. False if there is nobody who could do it.
bool activateWindow(std::uint32_t window);

} // namespace WindowManager
