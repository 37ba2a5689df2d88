// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// A folder on a disk of its own that can be filled up, for the rest of the life of a process made for it: a
/// file system in memory where the system lets this process mount one, else a limit on what may be written.
class SmallDisk
{
public:
    /// What the folder held is out of sight.
    explicit SmallDisk(const QString &folder);
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isMounted() const { return isMounted_; }

    /// Leaves room for that many bytes.
    bool fill(qint64 room);
    /// Leaves room for that many files and folders; only on a mounted disk.
    bool fillEntries(int room);
    bool clear();
    /// Lets nothing be changed from now on; only a mounted disk.
    bool makeReadOnly();

private:
    bool mount() const;
    QByteArray entryFiller(int number) const;

    QByteArray folder_;
    QByteArray filler_;
    int entryFillers_ = 0;
    bool isMounted_;
};
