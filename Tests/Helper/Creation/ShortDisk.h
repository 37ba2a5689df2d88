// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FolderLayer.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

/// Makes the real calls as if the disk had room for a number of entries only, or could not be written to: for
/// who may not mount such a disk.
class ShortDisk : public FolderLayer
{
public:
    int room = std::numeric_limits<int>::max();
    bool isReadOnly = false;

    int access(const QByteArray &path, int mode) override
    {
        return isReadOnly && (mode & W_OK) != 0 ? refuse(EROFS) : FolderLayer::access(path, mode);
    }
    int faccessat(int folder, const char *name, int mode) override
    {
        return isReadOnly && (mode & W_OK) != 0 ? refuse(EROFS) : FolderLayer::faccessat(folder, name, mode);
    }
    int openat(int folder, const char *name, int flags, mode_t mode) override
    {
        if (isReadOnly && (flags & (O_CREAT | O_WRONLY | O_RDWR)) != 0)
            return refuse(EROFS);
        if ((flags & O_CREAT) == 0)
            return FolderLayer::openat(folder, name, flags, mode);
        return room > 0 ? taken(FolderLayer::openat(folder, name, flags, mode)) : refuse(ENOSPC);
    }
    int mkdirat(int folder, const char *name, mode_t mode) override
    {
        if (isReadOnly)
            return refuse(EROFS);
        return room > 0 ? taken(FolderLayer::mkdirat(folder, name, mode)) : refuse(ENOSPC);
    }
    int unlinkat(int folder, const char *name, int flags) override
    {
        if (isReadOnly)
            return refuse(EROFS);
        const int result = FolderLayer::unlinkat(folder, name, flags);
        room += result == -1 ? 0 : 1;
        return result;
    }
    int fchmod(int descriptor, mode_t mode) override
    {
        return isReadOnly ? refuse(EROFS) : FolderLayer::fchmod(descriptor, mode);
    }
    int chmodOpen(int descriptor, mode_t mode) override
    {
        return isReadOnly ? refuse(EROFS) : FolderLayer::chmodOpen(descriptor, mode);
    }
    int utimensat(int folder, const char *name, const Times &times) override
    {
        return isReadOnly ? refuse(EROFS) : FolderLayer::utimensat(folder, name, times);
    }
    int fsetxattr(int descriptor, const char *name, const void *value, size_t size) override
    {
        return isReadOnly ? refuse(EROFS) : FolderLayer::fsetxattr(descriptor, name, value, size);
    }

private:
    int taken(int result)
    {
        room -= result == -1 ? 0 : 1;
        return result;
    }
    static int refuse(int error)
    {
        errno = error;
        return -1;
    }
};
