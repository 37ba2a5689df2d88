// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>
#include <chrono>

/// What the menus of content files and of scripts offer, without the menus.
namespace QNBFolderMenu {

/// Below the application-support folder.
inline const QString fileContentFolder = QStringLiteral("File Content");
inline const QString scriptsFolder = QStringLiteral("Scripts");

enum class Kind {
    /// Files only, from folders at any depth.
    FileContent,
    /// Files and folders; what is inside a bundle stays there.
    Scripts,
};

struct Limits
{
    /// A longer menu could not be opened at once, nor read by anybody.
    qsizetype entries = 10000;
    /// Folders may hold mostly what is not listed.
    qsizetype visits = 100000;
    /// The menu waits for the walk, and the folder may be on a slow network.
    std::chrono::milliseconds duration{1000};
};

/// The paths of the entries, relative to \a folder: each folder's in the order the file system gives them, a
/// folder's own directly before those inside it. Nothing if there is no such folder.
///
/// Files whose names begin with "." or "_" are left out, folders of such names are treated like any other.
/// What cannot be read as a file (a pipe, a socket) is left out, and so is, with a line in the log, what has
/// a name that is no text. A link counts as what it leads to, but a folder that is linked is not walked into:
/// links may lead in circles. A walk that meets a limit ends there, with a line in the log.
QStringList entries(const QString &folder, Kind kind, const Limits &limits = {});

} // namespace QNBFolderMenu
