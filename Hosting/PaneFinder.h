// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QStringList>

/// Where preference panes are, and which one is meant.
namespace PaneFinder {

/// The folders that a host looks through, the most particular first: \a ownFolder, where its own code is;
/// \a installedPanes, the panes that are installed with it, as a way from there; and
/// PaneFolders::installed().
QStringList searchFolders(const QString &ownFolder, const QString &installedPanes);

/// The paths of all `*.prefPane` folders in \a folders. Of several with one name only the first counts. That
/// one is a pane that works is not asked here.
QStringList panesIn(const QStringList &folders);

/// Why there is no pane at \a path, where Bundle::bundleWithPath() finds none: a sentence for the user.
QString whyNoPane(const QString &path);

/// Whether \a argument means a pane, and no file that one is to take in: a name without slash and suffix, a
/// folder, and what is named like a pane. All else is a file, also one that is gone or has a name that is no
/// text.
bool isPane(const QString &argument);

/// The path of the pane that \a name means. What has a slash in it is a path; all else is the name of a pane
/// in \a folders, with or without the extension, and never something in the working folder: its code would
/// run for being there. Fails, with a sentence for the user, if no pane is there or called so; that what is
/// there works is not asked.
Result<QString> pathOfPane(const QString &name, const QStringList &folders);

} // namespace PaneFinder
