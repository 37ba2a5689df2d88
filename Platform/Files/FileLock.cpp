// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileLock.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace {

using std::chrono::microseconds;

/// flock() has no time limit of its own, so the lock is asked for again and again, soon at first.
constexpr microseconds firstPause{50};
constexpr microseconds longestPause{2000};

} // namespace

FileLock::~FileLock()
{
    if (descriptor_.isOpen())
        layer_->flock(descriptor_.get(), LOCK_UN);
}

Result<FileLock> FileLock::acquire(FileLayer &layer, const QString &path, int timeout)
{
    const QByteArray name = QFile::encodeName(path);
    const QDeadlineTimer deadline(timeout);
    microseconds pause = firstPause;
    for (;;) {
        FileDescriptor descriptor(layer, layer.open(name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600));
        if (!descriptor.isOpen())
            return Result<FileLock>::failure(
                systemError(QStringLiteral("cannot open the lock %1").arg(path), errno));
        if (layer.flock(descriptor.get(), LOCK_EX | LOCK_NB) == 0) {
            // Whoever cleans old files away may have removed this one between the two calls: then the next
            // process would lock another.
            struct stat held = {};
            struct stat named = {};
            if (layer.fstat(descriptor.get(), &held) == 0 && layer.lstat(name, &named) == 0 &&
                held.st_dev == named.st_dev && held.st_ino == named.st_ino)
                return FileLock(layer, std::move(descriptor));
        } else if (errno != EWOULDBLOCK) {
            return Result<FileLock>::failure(systemError(QStringLiteral("cannot lock %1").arg(path), errno));
        }
        if (deadline.hasExpired())
            return Result<FileLock>::failure(QStringLiteral("%1 is locked by another process").arg(path));
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, longestPause);
    }
}

QString FileLock::fileNameFor(QLatin1StringView kind, const QString &path)
{
    const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(path), QCryptographicHash::Sha1);
    return QStringLiteral("quenby-%1-%2.lock").arg(kind, QLatin1StringView(hash.toHex()));
}
