// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Platform/Files/InterveningLayer.h"

#include <cerrno>
#include <linux/magic.h>

/// Makes the real calls as if the disk was of a kind on which reserved room is no promise.
class UnreservedDisk : public InterveningLayer
{
public:
    /// Whether the disk has no room for what is written at a place of a file.
    bool isFull = false;
    /// Whether it says that only when what was written is to be stored.
    bool isLate = false;

    int fstatfs(int descriptor, struct statfs *result) override
    {
        const int status = InterveningLayer::fstatfs(descriptor, result);
        result->f_type = BTRFS_SUPER_MAGIC;
        return status;
    }
    ssize_t pwrite(int descriptor, const void *buffer, size_t size, off_t place) override
    {
        if (!isFull)
            return InterveningLayer::pwrite(descriptor, buffer, size, place);
        errno = ENOSPC;
        return -1;
    }
    int fsync(int descriptor) override
    {
        if (!isLate)
            return InterveningLayer::fsync(descriptor);
        errno = ENOSPC;
        return -1;
    }
};
