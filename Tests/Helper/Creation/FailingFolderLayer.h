// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/FolderLayer.h"

#include <cerrno>
#include <csignal>
#include <limits>
#include <unistd.h>

/// Makes the real calls, and counts them, until one that fails or ends the process.
class FailingFolderLayer : public FolderLayer
{
public:
    static constexpr int never = std::numeric_limits<int>::max();

    /// The first call that fails, from 0, and how many do.
    int failingCall = never;
    int failures = 1;
    int errorNumber = EIO;
    /// At this call, instead of it, the process is killed.
    int killingCall = never;
    int calls = 0;

    int open(const QByteArray &path, int flags, mode_t mode) override
    {
        return fails() ? -1 : FolderLayer::open(path, flags, mode);
    }
    int close(int descriptor) override
    {
        const bool failed = fails();
        const int result = FolderLayer::close(descriptor);
        return failed ? refuse() : result;
    }
    ssize_t read(int descriptor, void *buffer, size_t size) override
    {
        return fails() ? -1 : FolderLayer::read(descriptor, buffer, size);
    }
    ssize_t write(int descriptor, const void *buffer, size_t size) override
    {
        return fails() ? -1 : FolderLayer::write(descriptor, buffer, size);
    }
    int lstat(const QByteArray &path, struct stat *result) override
    {
        return fails() ? -1 : FolderLayer::lstat(path, result);
    }
    int fstat(int descriptor, struct stat *result) override
    {
        return fails() ? -1 : FolderLayer::fstat(descriptor, result);
    }
    int access(const QByteArray &path, int mode) override
    {
        return fails() ? -1 : FolderLayer::access(path, mode);
    }
    int fchmod(int descriptor, mode_t mode) override
    {
        return fails() ? -1 : FolderLayer::fchmod(descriptor, mode);
    }
    int fsetxattr(int descriptor, const char *name, const void *value, size_t size) override
    {
        return fails() ? -1 : FolderLayer::fsetxattr(descriptor, name, value, size);
    }
    std::optional<QByteArray> realpath(const QByteArray &path) override
    {
        return fails() ? std::nullopt : FolderLayer::realpath(path);
    }
    int openat(int folder, const char *name, int flags, mode_t mode) override
    {
        return fails() ? -1 : FolderLayer::openat(folder, name, flags, mode);
    }
    int mkdirat(int folder, const char *name, mode_t mode) override
    {
        return fails() ? -1 : FolderLayer::mkdirat(folder, name, mode);
    }
    int unlinkat(int folder, const char *name, int flags) override
    {
        return fails() ? -1 : FolderLayer::unlinkat(folder, name, flags);
    }
    int fstatat(int folder, const char *name, struct stat *result, int flags) override
    {
        return fails() ? -1 : FolderLayer::fstatat(folder, name, result, flags);
    }
    int faccessat(int folder, const char *name, int mode) override
    {
        return fails() ? -1 : FolderLayer::faccessat(folder, name, mode);
    }
    int utimensat(int folder, const char *name, const Times &times) override
    {
        return fails() ? -1 : FolderLayer::utimensat(folder, name, times);
    }
    int chmodOpen(int descriptor, mode_t mode) override
    {
        return fails() ? -1 : FolderLayer::chmodOpen(descriptor, mode);
    }
    ssize_t copy_file_range(int from, int to, size_t size) override
    {
        return fails() ? -1 : FolderLayer::copy_file_range(from, to, size);
    }
    std::optional<QList<QByteArray>> entriesAt(int folder) override
    {
        return fails() ? std::nullopt : FolderLayer::entriesAt(folder);
    }
    int fstatfs(int descriptor, struct statfs *result) override
    {
        return fails() ? -1 : FolderLayer::fstatfs(descriptor, result);
    }
    std::optional<int> flagsOf(int folder) override
    {
        return fails() ? std::nullopt : FolderLayer::flagsOf(folder);
    }

private:
    bool fails()
    {
        const int call = calls++;
        if (call == killingCall)
            ::kill(::getpid(), SIGKILL);
        if (call < failingCall || call - failingCall >= failures)
            return false;
        refuse();
        return true;
    }
    int refuse() const
    {
        errno = errorNumber;
        return -1;
    }
};
