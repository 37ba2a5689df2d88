// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLayer.h"

/// What a file has besides its bytes.
namespace FileAttributes {

/// Gives the open file \a descriptor the owner, the extended attributes and the mode of the file \a from,
/// whose \a information is known. An owner or a group that this user may not give is left out, and then the
/// file is open to no group or user that the old one was closed to.
Result<> keep(FileLayer &layer, const QByteArray &from, const struct stat &information, int descriptor);

/// The same without the extended attributes: \a from is only a name for what may go wrong, and never looked
/// at.
Result<> keepRights(FileLayer &layer, const QByteArray &from, const struct stat &information, int descriptor);

} // namespace FileAttributes
