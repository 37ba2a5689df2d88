// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"

#include <utility>

/// An open file of a FileLayer, closed with its owner.
class FileDescriptor
{
public:
    FileDescriptor(FileLayer &layer, int descriptor)
        : layer_(&layer)
        , descriptor_(descriptor)
    {
    }
    FileDescriptor(FileDescriptor &&other) noexcept
        : layer_(other.layer_)
        , descriptor_(std::exchange(other.descriptor_, -1))
    {
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    FileDescriptor &operator=(FileDescriptor &&) = delete;
    ~FileDescriptor()
    {
        if (isOpen())
            layer_->close(descriptor_);
    }

    bool isOpen() const { return descriptor_ != -1; }
    int get() const { return descriptor_; }

    /// Closes now; for whom the result counts (a deferred write can fail here). -1 with errno on failure, and
    /// closed all the same.
    int close() { return layer_->close(std::exchange(descriptor_, -1)); }

private:
    FileLayer *layer_;
    int descriptor_;
};
