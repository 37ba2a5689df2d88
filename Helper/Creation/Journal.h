// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/JournalFormat.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FolderLayer.h"
#include "Platform/Result.h"

#include <QString>
#include <memory>

namespace Creation {

/// The journal of a creation that is going on. A kill loses none of what was noted, and a power failure only
/// what the system has not written yet. Whoever has one open holds its lock; a journal that nobody holds is
/// of a creation that was killed.
///
/// Where room that was reserved can always be written to, notes go into a mapping of the file, without a call
/// for each item. Other file systems (those that never write in place, those of other machines) may have no
/// room for a page all the same, and would end the program at the access: there each note is written.
class Journal
{
public:
    /// Opens the file \a path, which has the bytes of JournalFormat::write(), and reserves room for the
    /// slots. \a layer stands for the system calls.
    static Result<std::shared_ptr<Journal>> open(const QString &path,
                                                 FolderLayer &layer = FolderLayer::real());
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    const QString &path() const { return path_; }

    /// Notes what the operation number \a operation of the plan has made.
    void note(qsizetype operation, const Record::Entry &entry);
    /// Why a note is missing; empty if none is.
    const QString &error() const { return error_; }
    /// Fails if a note may be missing, or may be missing after a power failure.
    Result<> store() const;

private:
    Journal(FolderLayer &layer, QString path, FileDescriptor file, char *mapping,
            const JournalFormat::Slots &slots);

    FolderLayer &layer_;
    const QString path_;
    const FileDescriptor file_;
    /// Null where notes are written.
    char *const mapping_;
    const JournalFormat::Slots slots_;
    QString error_;
};

} // namespace Creation
