// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

class CreationNotices;

namespace PaneLauncher {

/// Opens the pane, in the program that shows panes. Tells the user, by \a notices, if that was not found or
/// cannot be started.
void launchOrTell(CreationNotices &notices);

} // namespace PaneLauncher
