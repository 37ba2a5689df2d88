// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>

/// Reading files that somebody else chose.
namespace BoundedFile {

/// The bytes of the regular file at \a path if it has at most \a limit of them. Whatever else a path may name
/// (a folder, a fifo without a writer, a device that never ends) is refused at once, and a file over the
/// limit before memory is taken for it.
Result<QByteArray> read(const QString &path, qint64 limit);
/// The same for a path in the file system's own bytes.
Result<QByteArray> read(const QByteArray &path, qint64 limit);

} // namespace BoundedFile
