// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QUrl>

/// The desktop's launcher.
namespace Workspace {

/// Hands \a url (http, https, mailto or a local file) to the program that the desktop chooses for it
/// (xdg-open), detached. False for any other URL, or if no launcher could be started; what the launcher makes
/// of it is not waited for.
bool openURL(const QUrl &url);

/// Starts the application bundle at \a path, or does the same as openURL() for any other file or folder
/// there; a folder is shown by the file manager. False also if nothing is there.
///
/// An application is its `CFBundleExecutable`: started without arguments and without a shell, in the home
/// folder, in a session of its own with nothing to read from or write to, and nobody's child here; it is not
/// waited for. False if the bundle names no executable or that cannot be run.
bool openFile(const QString &path);

} // namespace Workspace
