// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"

#include <algorithm>
#include <cerrno>
#include <limits>

/// Makes the real calls that change something or make it durable, but for one of them, or when the disk is
/// full.
class FailingFileLayer : public FileLayer
{
public:
    static constexpr int none = -1;

    /// The number, from 0, of the call that fails.
    int failingCall = none;
    int errorNumber = EIO;
    /// Bytes that fit; the write that passes them is cut short, the next finds the disk full.
    size_t space = std::numeric_limits<size_t>::max();
    /// Neither hard links nor anything in their place.
    bool hasLinks = true;
    /// Owners cannot be given away.
    bool canGiveAway = true;
    int calls = 0;

    int open(const QByteArray &path, int flags, mode_t mode) override
    {
        return fails() ? -1 : FileLayer::open(path, flags, mode);
    }
    int close(int descriptor) override
    {
        const bool failed = fails();
        const int result = FileLayer::close(descriptor);
        return failed ? refuse() : result;
    }
    ssize_t read(int descriptor, void *buffer, size_t size) override
    {
        return fails() ? -1 : FileLayer::read(descriptor, buffer, size);
    }
    ssize_t write(int descriptor, const void *buffer, size_t size) override
    {
        if (fails())
            return -1;
        if (space == 0 && size > 0) {
            errno = ENOSPC;
            return -1;
        }
        const ssize_t written = FileLayer::write(descriptor, buffer, std::min(size, space));
        if (written > 0 && space != std::numeric_limits<size_t>::max())
            space -= static_cast<size_t>(written);
        return written;
    }
    int fsync(int descriptor) override { return fails() ? -1 : FileLayer::fsync(descriptor); }
    int flock(int descriptor, int operation) override
    {
        return fails() ? -1 : FileLayer::flock(descriptor, operation);
    }
    int stat(const QByteArray &path, struct stat *result) override
    {
        return fails() ? -1 : FileLayer::stat(path, result);
    }
    int lstat(const QByteArray &path, struct stat *result) override
    {
        return fails() ? -1 : FileLayer::lstat(path, result);
    }
    int fstat(int descriptor, struct stat *result) override
    {
        return fails() ? -1 : FileLayer::fstat(descriptor, result);
    }
    int access(const QByteArray &path, int mode) override
    {
        return fails() ? -1 : FileLayer::access(path, mode);
    }
    int fchmod(int descriptor, mode_t mode) override
    {
        return fails() ? -1 : FileLayer::fchmod(descriptor, mode);
    }
    int fchown(int descriptor, uid_t owner, gid_t group) override
    {
        if (!canGiveAway) {
            errno = EPERM;
            return -1;
        }
        return fails() ? -1 : FileLayer::fchown(descriptor, owner, group);
    }
    int futimens(int descriptor, const timespec (&times)[2]) override
    {
        return fails() ? -1 : FileLayer::futimens(descriptor, times);
    }
    ssize_t listxattr(const QByteArray &path, char *list, size_t size) override
    {
        return fails() ? -1 : FileLayer::listxattr(path, list, size);
    }
    ssize_t getxattr(const QByteArray &path, const char *name, void *value, size_t size) override
    {
        return fails() ? -1 : FileLayer::getxattr(path, name, value, size);
    }
    int fsetxattr(int descriptor, const char *name, const void *value, size_t size) override
    {
        return fails() ? -1 : FileLayer::fsetxattr(descriptor, name, value, size);
    }
    int rename(const QByteArray &from, const QByteArray &to) override
    {
        return fails() ? -1 : FileLayer::rename(from, to);
    }
    int renameToFree(const QByteArray &from, const QByteArray &to) override
    {
        return fails() ? -1 : FileLayer::renameToFree(from, to);
    }
    int link(const QByteArray &existing, const QByteArray &created) override
    {
        if (!hasLinks) {
            errno = EPERM;
            return -1;
        }
        return fails() ? -1 : FileLayer::link(existing, created);
    }
    int symlink(const QByteArray &text, const QByteArray &created) override
    {
        return fails() ? -1 : FileLayer::symlink(text, created);
    }
    int mkdir(const QByteArray &path, mode_t mode) override
    {
        return fails() ? -1 : FileLayer::mkdir(path, mode);
    }

private:
    bool fails()
    {
        if (calls++ != failingCall)
            return false;
        refuse();
        return true;
    }
    int refuse()
    {
        errno = errorNumber;
        return -1;
    }
};
