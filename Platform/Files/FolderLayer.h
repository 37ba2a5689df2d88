// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"

#include <array>
#include <ctime>
#include <sys/vfs.h>

/// The system calls that work relative to an open folder, besides those of FileLayer and after the same
/// rules. Whoever keeps to them cannot be led elsewhere by what somebody does to the path meanwhile.
class FolderLayer : public FileLayer
{
public:
    /// The time of the last access, and that of the last modification.
    using Times = std::array<timespec, 2>;

    /// The layer that makes the real calls.
    static FolderLayer &real();

    virtual int openat(int folder, const char *name, int flags, mode_t mode = 0);
    virtual int mkdirat(int folder, const char *name, mode_t mode);
    virtual int unlinkat(int folder, const char *name, int flags);
    virtual int fstatat(int folder, const char *name, struct stat *result, int flags);
    /// With the effective user's rights.
    virtual int faccessat(int folder, const char *name, int mode);
    virtual int utimensat(int folder, const char *name, const Times &times);
    /// Also of a folder that was opened with O_PATH only.
    virtual int chmodOpen(int descriptor, mode_t mode);
    virtual ssize_t copy_file_range(int from, int to, size_t size);
    /// The names in an open folder but "." and ".."; none, with errno, on failure.
    virtual std::optional<QList<QByteArray>> entriesAt(int folder);
    virtual int fstatfs(int descriptor, struct statfs *result);
    /// The flags FS_…_FL of an open folder, also of one that was opened with O_PATH only; none, with errno,
    /// on failure.
    virtual std::optional<int> flagsOf(int folder);
};
