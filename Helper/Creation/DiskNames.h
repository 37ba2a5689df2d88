// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

class FolderLayer;

namespace Creation {

/// Which names are the same to a disk.
namespace DiskNames {

/// Whether in an open folder, and in those that are made in it, names are the same that differ in case only.
/// False where that cannot be found out.
bool areCaseBlind(FolderLayer &layer, int folder);

/// Equal for names that such a disk may take for the same. Some of them do not look at the composition of
/// letters either, so that counts for nothing too.
QByteArray key(const QByteArray &name);

} // namespace DiskNames

} // namespace Creation
