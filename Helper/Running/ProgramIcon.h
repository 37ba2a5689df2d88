// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>

/// The icon of the program, in the tray and of its windows: a tree of folders on a board. Drawn here: an icon
/// theme would be read for it, and may lack it.
QIcon programIcon();
