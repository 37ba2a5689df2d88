// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/JournalFormat.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Result.h"

#include <QString>
#include <memory>

namespace Creation {

/// The journal of a creation that is going on. What is made is noted in a mapping of the file, without a call
/// for each item: so a kill loses none of it, and a power failure only what the system has not written yet.
/// Whoever has one open holds its lock; a journal that nobody holds is of a creation that was killed.
class Journal
{
public:
    /// Opens the file \a path, which has the bytes of JournalFormat::write(), and reserves room for the
    /// slots.
    static Result<std::shared_ptr<Journal>> open(const QString &path);
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    const QString &path() const { return path_; }

    /// Notes what the operation number \a operation of the plan has made.
    void note(qsizetype operation, const Record::Entry &entry);

private:
    Journal(QString path, FileDescriptor file, char *bytes, const JournalFormat::Slots &slots);

    const QString path_;
    const FileDescriptor file_;
    char *const bytes_;
    const JournalFormat::Slots slots_;
};

} // namespace Creation
