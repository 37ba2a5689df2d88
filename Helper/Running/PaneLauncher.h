// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

/// Opens the pane, in the program that shows panes.
namespace PaneLauncher {

/// False if the program was not found or cannot be started.
bool launch();

} // namespace PaneLauncher
