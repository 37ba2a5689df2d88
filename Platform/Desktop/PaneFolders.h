// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// Where preference panes are installed. They hold code, which has its place below `lib`.
namespace PaneFolders {

/// The folders `PreferencePanes`, which need not exist, the user's before the system's: of each data folder
/// `PREFIX/share` that in the library folder of the same prefix, then that in the data folder itself, where a
/// user may put panes by hand and where earlier versions were installed.
QStringList installed();

} // namespace PaneFolders
