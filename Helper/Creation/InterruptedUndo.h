// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/JournalFormat.h"
#include "Platform/Files/FolderLayer.h"

namespace Creation {

struct InterruptedUndoOutcome
{
    /// For people: what was left, or why nothing was removed. Empty if all that was made is gone.
    QString left;
    /// Whether another try may remove what this one did not.
    bool canBeTriedAgain = false;
};

/// Removes what a creation made that was killed, by its journal. That is what was noted, unless it has been
/// changed since; and besides it the one thing that came next, if it is empty or a beginning of what was to
/// be written, and no older than the creation. Everything else stays, and is told: nobody knows whose it is.
/// What is gone already is no obstacle, so that this may be killed and done again.
InterruptedUndoOutcome undo(const JournalContent &journal, FolderLayer &layer = FolderLayer::real());

} // namespace Creation
