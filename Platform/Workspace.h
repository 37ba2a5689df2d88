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

} // namespace Workspace
