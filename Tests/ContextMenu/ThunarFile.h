// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QStringList>

/// Thunar's file of actions as Thunar reads it, apart from how ours are written.
namespace ThunarFile {

/// The text of each element \a element in \a file; the test fails if that is not sound.
QStringList texts(const QByteArray &file, const QString &element);

/// What is handed to a shell for an action with the command \a command on \a folder: the path, quoted, for
/// its code. Null if there is any other code in it.
QString commandLine(const QString &command, const QString &folder);

} // namespace ThunarFile
