// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Journal.h"
#include "Helper/Creation/JournalFormat.h"
#include "Platform/Files/FileLock.h"

#include <QString>
#include <memory>
#include <vector>

/// The journals of all creations that are going on, and of those that were killed, in the folder of the
/// program's state: one file for each folder that is created in.
class Journals
{
public:
    /// Those of the user.
    Journals();
    explicit Journals(QString folder);

    /// Writes the journal of a creation that is about to begin; durable when it returns. The creation counts
    /// as going on as long as somebody has the journal, which uses \a layer.
    Result<std::shared_ptr<Creation::Journal>> begin(const Creation::JournalContent &content,
                                                     FolderLayer &layer = FolderLayer::real()) const;
    /// Removes one. Nothing to do is no failure.
    Result<> remove(const QString &path) const;

    struct Interrupted
    {
        QString path;
        Creation::JournalContent content;
    };
    struct Unreadable
    {
        QString path;
        /// When it was changed last, in nanoseconds since 1970.
        qint64 changed = 0;
    };
    /// Those whose creation is over and that were not removed, the one that began last first. Those that
    /// cannot be read are appended to \a unreadable.
    std::vector<Interrupted> interrupted(std::vector<Unreadable> &unreadable) const;
    /// Whether there is one of those. Does not wait: while another process begins a creation, there is none.
    bool hasInterrupted() const;
    /// Notes that the user was told of it, or need not be.
    void setTold(const QString &path) const;

private:
    /// Waits for \a timeout milliseconds.
    Result<FileLock> lock(int timeout) const;
    QStringList abandoned(int timeout) const;

    const QString folder_;
};
