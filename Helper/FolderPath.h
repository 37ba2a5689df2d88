// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Paths of folders, as people give them.
namespace FolderPath {

/// The absolute path of the same folder, short. Going up from a link goes where the system goes: up from the
/// folder that it leads to.
QString shortened(const QString &path);

} // namespace FolderPath
