// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

namespace Creation {

/// Which entry of which disk, whatever it is called.
struct FileIdentity
{
    dev_t device = 0;
    ino_t number = 0;

    FileIdentity() = default;
    FileIdentity(dev_t ofDevice, ino_t ofNumber)
        : device(ofDevice)
        , number(ofNumber)
    {
    }
    explicit FileIdentity(const struct stat &information)
        : device(information.st_dev)
        , number(information.st_ino)
    {
    }

    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

} // namespace Creation
