// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <iosfwd>
#include <sys/stat.h>
#include <vector>

/// What is on the disk at one path.
struct DiskEntry
{
    /// Below the folder that was read; "." for that folder.
    QByteArray path;
    mode_t mode = 0;
    /// Of a file; the text of a link.
    QByteArray bytes;
    /// The number of the file manager's label.
    int label = 0;
    ino_t number = 0;
    /// In nanoseconds.
    qint64 modified = 0;
    /// Of folders.
    qint64 accessed = 0;

    mode_t permissions() const { return mode & 07777; }
    bool isFolder() const { return S_ISDIR(mode); }

    friend bool operator==(const DiskEntry &, const DiskEntry &) = default;
};

std::ostream &operator<<(std::ostream &stream, const DiskEntry &entry);

/// Everything in a folder, and the folder itself, in the order of the paths. Works for any depth and for what
/// its owner may not read.
class DiskTree
{
public:
    /// Reads such that reading again finds the same times of access.
    static std::vector<DiskEntry> read(const QString &folder);
    /// Removes everything in a folder.
    static void clear(const QString &folder);
    /// The paths alone, without the folder's own.
    static std::vector<QByteArray> paths(const std::vector<DiskEntry> &entries);
    /// The entry at \a path; the test fails if there is none.
    static DiskEntry at(const std::vector<DiskEntry> &entries, const QByteArray &path);
};
