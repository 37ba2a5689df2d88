// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/SmallDisk.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char diskOptions[] = "size=4m,nr_inodes=512";

bool putLine(const char *path, const QByteArray &line)
{
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    const bool ok = file != -1 && ::write(file, line.constData(), std::size_t(line.size())) == line.size();
    ::close(file);
    return ok;
}

/// Mounts of this process's own, and the right to make them: as the administrator, or as one within.
bool leaveMounts()
{
    if (::unshare(CLONE_NEWNS) == 0)
        return true;
    const QByteArray user = QByteArray::number(::geteuid());
    const QByteArray group = QByteArray::number(::getegid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && putLine("/proc/self/setgroups", "deny") &&
           putLine("/proc/self/uid_map", user + ' ' + user + " 1") &&
           putLine("/proc/self/gid_map", group + ' ' + group + " 1");
}

bool limitFiles(rlim_t size)
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_FSIZE, &limit) == -1)
        return false;
    limit.rlim_cur = std::min(size, limit.rlim_max);
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

} // namespace

SmallDisk::SmallDisk(const QString &folder)
    : folder_(QFile::encodeName(folder))
    , filler_(folder_ + "/filler")
    , isMounted_(mount())
{
}

bool SmallDisk::mount() const
{
    return leaveMounts() && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder_.constData(), "tmpfs", 0, diskOptions) == 0;
}

bool SmallDisk::fill(qint64 room)
{
    if (!isMounted_)
        return limitFiles(rlim_t(room));
    const int file = ::open(filler_.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const QByteArray block(4096, 'f');
    qint64 size = 0;
    ssize_t written = 0;
    while ((written = ::write(file, block.constData(), std::size_t(block.size()))) > 0)
        size += written;
    const bool isFull = written == -1 && errno == ENOSPC;
    const bool hasRoom = ::ftruncate(file, size - room) == 0;
    ::close(file);
    return isFull && hasRoom;
}

QByteArray SmallDisk::entryFiller(int number) const
{
    return filler_ + '-' + QByteArray::number(number);
}

bool SmallDisk::fillEntries(int room)
{
    while (::mknod(entryFiller(entryFillers_).constData(), S_IFREG | 0600, 0) == 0)
        ++entryFillers_;
    bool hasRoom = errno == ENOSPC;
    for (; hasRoom && room > 0; --room)
        hasRoom = ::unlink(entryFiller(--entryFillers_).constData()) == 0;
    return hasRoom;
}

bool SmallDisk::makeReadOnly()
{
    return ::mount(nullptr, folder_.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}

bool SmallDisk::clear()
{
    while (entryFillers_ > 0) {
        if (::unlink(entryFiller(--entryFillers_).constData()) == -1)
            return false;
    }
    if (!isMounted_)
        return limitFiles(RLIM_INFINITY);
    return ::unlink(filler_.constData()) == 0 || errno == ENOENT;
}
