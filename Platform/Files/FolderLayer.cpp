// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FolderLayer.h"

#include "Platform/Files/SystemCalls.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>

FolderLayer &FolderLayer::real()
{
    static FolderLayer layer;
    return layer;
}

int FolderLayer::openat(int folder, const char *name, int flags, mode_t mode)
{
    return untilNotInterrupted([&] { return ::openat(folder, name, flags | O_CLOEXEC, mode); });
}

int FolderLayer::mkdirat(int folder, const char *name, mode_t mode)
{
    return ::mkdirat(folder, name, mode);
}

int FolderLayer::unlinkat(int folder, const char *name, int flags)
{
    return ::unlinkat(folder, name, flags);
}

int FolderLayer::fstatat(int folder, const char *name, struct stat *result, int flags)
{
    return ::fstatat(folder, name, result, flags);
}

int FolderLayer::faccessat(int folder, const char *name, int mode)
{
    return ::faccessat(folder, name, mode, AT_EACCESS);
}

int FolderLayer::utimensat(int folder, const char *name, const Times &times)
{
    return ::utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW);
}

int FolderLayer::chmodOpen(int descriptor, mode_t mode)
{
    // fchmod() refuses such a descriptor; the path of it leads to what it stands for and nowhere else.
    char path[sizeof "/proc/self/fd/" + 3 * sizeof descriptor];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", descriptor);
    return ::chmod(path, mode);
}

ssize_t FolderLayer::copy_file_range(int from, int to, size_t size)
{
    return untilNotInterrupted([&] { return ::copy_file_range(from, nullptr, to, nullptr, size, 0); });
}

std::optional<QList<QByteArray>> FolderLayer::entriesAt(int folder)
{
    // A descriptor of its own: the place of the reading is shared by those that are copies of each other.
    int own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_NOATIME);
    if (own == -1 && errno == EPERM)
        own = openat(folder, ".", O_RDONLY | O_DIRECTORY);
    if (own == -1)
        return std::nullopt;
    const std::unique_ptr<DIR, DirectoryCloser> directory(::fdopendir(own));
    if (!directory) {
        close(own);
        return std::nullopt;
    }
    return namesIn(directory.get());
}

int FolderLayer::fstatfs(int descriptor, struct statfs *result)
{
    return untilNotInterrupted([&] { return ::fstatfs(descriptor, result); });
}

std::optional<int> FolderLayer::flagsOf(int folder)
{
    const int own = openat(folder, ".", O_RDONLY | O_DIRECTORY);
    if (own == -1)
        return std::nullopt;
    int flags = 0;
    const int error = ::ioctl(own, FS_IOC_GETFLAGS, &flags) == -1 ? errno : 0;
    close(own);
    errno = error;
    return error == 0 ? std::optional(flags) : std::nullopt;
}
