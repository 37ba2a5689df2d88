// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <cerrno>
#include <dirent.h>

/// Makes a system call, and makes it again if a signal interrupts it. Its result, and errno.
template <typename Call>
auto untilNotInterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// For a std::unique_ptr.
struct DirectoryCloser
{
    void operator()(DIR *directory) const { ::closedir(directory); }
};
