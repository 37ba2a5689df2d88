// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QList>

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <optional>
#include <unistd.h>

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

/// All names in an open folder but "." and ".."; none with errno on failure.
inline std::optional<QList<QByteArray>> namesIn(DIR *folder)
{
    QList<QByteArray> names;
    errno = 0;
    while (const dirent *entry = ::readdir(folder)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
        errno = 0;
    }
    return errno == 0 ? std::optional(names) : std::nullopt;
}

/// The text of the link \a name in an open folder; none with errno on failure.
inline std::optional<QByteArray> linkText(int folder, const char *name)
{
    QByteArray text(PATH_MAX, Qt::Uninitialized);
    const ssize_t size = ::readlinkat(folder, name, text.data(), static_cast<size_t>(text.size()));
    if (size == -1)
        return std::nullopt;
    text.truncate(size);
    return text;
}
