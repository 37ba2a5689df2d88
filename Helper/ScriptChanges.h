// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Record.h"

#include <ctime>

/// What a preset's script does to the files just made belongs to the creation: undoing it is to remove them
/// all the same. What the user does to them does not.
class ScriptChanges
{
public:
    /// Begins now, before the script runs.
    ScriptChanges();

    /// Now that the script has ended: takes the files that were written to since, as they are, into \a
    /// record. Not after a long time, in which the user may have been at work too. Whether the record was
    /// changed.
    bool takeInto(Creation::Record &record) const;

private:
    timespec begin_ = {};
};
