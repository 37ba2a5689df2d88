// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Journal.h"
#include "Helper/Creation/Record.h"

#include <functional>

namespace Creation {

/// Called after each of \a total operations, on the thread that executes. False cancels: what was made is
/// undone.
using Progress = std::function<bool(qsizetype done, qsizetype total)>;

struct Outcome
{
    bool succeeded = false;
    /// By the progress function; then it is no success either.
    bool cancelled = false;
    /// What failed and why, for people.
    QString error;
    /// Empty unless it succeeded.
    Record record;
};

/// Does what the plan says, all of it or nothing.
///
/// Each file and folder gets exactly the permissions of its operation, whatever the umask (a folder that
/// inherits the set-group-ID bit keeps that). Both these and a label are left out where the disk keeps none.
///
/// On failure what this run made is removed again, and only that: what is no longer the file or folder that
/// was made stays, and so does a folder that something else was put into. The folders that were there get
/// their times of access and modification back (that of the last change of status cannot be given back).
///
/// What is made is noted in \a journal, that of the plan, if there is one; it stays the caller's.
Outcome execute(const Plan &plan, const Progress &progress = {}, Journal *journal = nullptr);
/// The same with system calls of one's own.
Outcome execute(const Plan &plan, const Progress &progress, FolderLayer &layer, Journal *journal = nullptr);

} // namespace Creation
