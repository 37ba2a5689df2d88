// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileDescriptor.h"
#include "Platform/Result.h"

/// An advisory lock between processes, and between holders within one, on an empty file of its own. The
/// kernel lets go of it with its holder, however that ends. The file stays: removing it would let two
/// processes hold locks on two files of one name.
class FileLock
{
public:
    /// Waits at most \a timeout milliseconds.
    static Result<FileLock> acquire(FileLayer &layer, const QString &path, int timeout);

    /// What the lock of \a path is called among the files of the runtime folder: the same for all who mean
    /// that path, another for every other path and every other \a kind of thing.
    static QString fileNameFor(QLatin1StringView kind, const QString &path);

    FileLock(FileLock &&) noexcept = default;
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    FileLock &operator=(FileLock &&) = delete;
    /// Lets go before closing: a child between its fork and its exec has the file open too.
    ~FileLock();

private:
    FileLock(FileLayer &layer, FileDescriptor descriptor)
        : layer_(&layer)
        , descriptor_(std::move(descriptor))
    {
    }

    FileLayer *layer_;
    FileDescriptor descriptor_;
};
