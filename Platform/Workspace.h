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

/// The same for the file or folder at \a path; a folder is shown by the file manager. False also if nothing
/// is there.
bool openFile(const QString &path);

} // namespace Workspace
