// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

/// The umask of the process, for a while.
class Umask
{
public:
    explicit Umask(mode_t mask)
        : before_(::umask(mask))
    {
    }
    ~Umask() { ::umask(before_); }
    Umask(const Umask &) = delete;
    Umask &operator=(const Umask &) = delete;

private:
    const mode_t before_;
};
