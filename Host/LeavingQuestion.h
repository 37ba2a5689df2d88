// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

class PaneSession;
class QWidget;

/// What the user is asked when a pane that cannot save is to be left.
namespace LeavingQuestion {

/// Has the pane save. If it cannot, asks in front of \a window, until it can or the user decides: to try
/// again, to save a copy somewhere else, to leave without saving, or to stay. Whether the pane may be left;
/// not if the program is told to end meanwhile, which needs no leave.
bool mayLeave(PaneSession &session, QWidget &window);

} // namespace LeavingQuestion
