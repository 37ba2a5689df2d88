// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Reading files that somebody else chose.
namespace BoundedFile {

/// The bytes of the regular file at \a path if it has at most \a limit of them; none on failure, with the
/// reason in \a error. Whatever else a path may name (a folder, a fifo without a writer, a device that never
/// ends) is refused at once, and a file over the limit before memory is taken for it.
std::optional<QByteArray> read(const QString &path, qint64 limit, QString *error);
/// The same for a path in the file system's own bytes.
std::optional<QByteArray> read(const QByteArray &path, qint64 limit, QString *error);

} // namespace BoundedFile
