// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"

#include <QByteArray>

#include <sys/stat.h>

/// What is done to files and folders as a whole. Paths are the file system's own bytes; a symbolic link at
/// the end of one is meant itself, and so is each below it: nothing is followed.
namespace FileOperations {

/// Whether anything is there, be it a link that leads nowhere.
bool exists(const QByteArray &path);

/// Makes one folder; those above it have to be there. \a mode is subject to the user's mask.
Result<> createDirectory(const QByteArray &path, mode_t mode = S_IRWXU | S_IRWXG | S_IRWXO);

/// Removes a file, a link, or a folder with all that is in it.
Result<> removeItem(const QByteArray &path);

/// Copies a file, a link, or a folder with all that is in it, to where nothing may be yet: whole or not at
/// all. The copy has the modes of the original, except that its owner may always change it: what is installed
/// is often write-protected, and the copy is the user's own.
Result<> copyItem(const QByteArray &from, const QByteArray &to);

} // namespace FileOperations
