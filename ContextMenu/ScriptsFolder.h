// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// A folder of scripts: its folders are submenus, and each script in them is an entry that has the name of
/// its file. A script learns from its environment what is selected.
namespace ScriptsFolder {

/// What a preset's script is called among \a taken, to which it is added: its title as far as a file can have
/// that name, be shown and be started.
QString fileName(const QString &title, QStringList &taken);

/// The script that calls \a commandLine with the folders that are meant: those that are selected, those that
/// selected files are in, or the current one. \a prefix is that of the variables which tell.
QByteArray script(const QByteArrayList &commandLine, const QByteArray &prefix);

/// A script for each preset, in a submenu of \a scriptsFolder.
QList<FileManagerWithFiles::File> files(const PresetMenu &menu, const QString &scriptsFolder,
                                        const QByteArray &prefix);

} // namespace ScriptsFolder
