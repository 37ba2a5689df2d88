// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/BoundedFile.h"

#include "Platform/Files/FileDescriptor.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

Result<QByteArray> BoundedFile::read(const QString &path, qint64 limit)
{
    return read(QFile::encodeName(path), limit);
}

Result<QByteArray> BoundedFile::read(const QByteArray &path, qint64 limit)
{
    const auto fail = [&path](const QString &reason) {
        return Result<QByteArray>::failure(QFile::decodeName(path) + QStringLiteral(": ") + reason);
    };
    const auto failErrno = [&fail] { return fail(QString::fromLocal8Bit(std::strerror(errno))); };

    // Without O_NONBLOCK, opening a fifo waits for a writer. It changes nothing for a regular file.
    FileLayer &layer = FileLayer::real();
    const FileDescriptor file(layer, layer.open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file.isOpen() || layer.fstat(file.get(), &status) == -1)
        return failErrno();
    if (!S_ISREG(status.st_mode))
        return fail(QStringLiteral("not a regular file"));
    const QString tooLarge = QStringLiteral("larger than %1 bytes").arg(limit);
    if (status.st_size > limit)
        return fail(tooLarge);

    // One byte more than expected, so that the end is seen without another turn; a file that grows meanwhile
    // is read on, up to the limit.
    QByteArray bytes(qsizetype(status.st_size) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    while (true) {
        const ssize_t got = layer.read(file.get(), bytes.data() + size, std::size_t(bytes.size() - size));
        if (got == -1)
            return failErrno();
        if (got == 0)
            break;
        size += got;
        if (size > limit)
            return fail(tooLarge);
        if (size == bytes.size())
            bytes.resize(qsizetype(std::min<qint64>(qint64(size) * 2, limit + 1)));
    }
    bytes.truncate(size);
    return bytes;
}
