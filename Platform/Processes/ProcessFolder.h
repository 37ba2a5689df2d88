// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileDescriptor.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <optional>
#include <sys/types.h>

/// What the kernel writes in the file `stat` of a process, as far as it counts here.
struct ProcessStatus
{
    pid_t parent = 0;
    /// In ticks of the kernel's clock since the system started.
    quint64 startTime = 0;
    /// Ended, and kept for its parent to ask how.
    bool isZombie = false;

    /// None if \a stat is cut short or no such text. The name of the process, in parentheses, may hold
    /// anything, parentheses too.
    static std::optional<ProcessStatus> parse(QByteArrayView stat);
};

/// A process as the kernel shows it in a folder. All that is read through one of these is of one process,
/// whoever gets its id later.
class ProcessFolder
{
public:
    /// None if there is no process \a pid below \a root.
    static std::optional<ProcessFolder> open(int root, pid_t pid);

    std::optional<ProcessStatus> status() const;
    /// The user who started the process. The folder's owner is another where the kernel keeps the process
    /// from being looked into; none if the process is gone.
    std::optional<uid_t> realUser() const;
    /// The name that the kernel keeps, as bytes; none if the process is gone.
    std::optional<QByteArray> command() const;
    /// The path of the executable, without the note that it was deleted or replaced since; empty if there is
    /// none (kernel threads, zombies) or it is not ours to know.
    QString executable() const;
    /// command(), decoded. The kernel cuts it at 15 bytes; where the executable's file name continues it,
    /// that file name. Null if the process is gone.
    QString name() const;

private:
    explicit ProcessFolder(FileDescriptor folder)
        : folder_(std::move(folder))
    {
    }

    FileDescriptor folder_;
};

/// What the small file \a path, relative to the open folder \a folder, has at most \a capacity bytes of, read
/// at once into \a buffer; -1 if it cannot be read.
ssize_t readProcessFile(int folder, const char *path, char *buffer, size_t capacity);

/// The most bytes that the kernel keeps of a process's name.
inline constexpr qsizetype longestCommand = 15;
