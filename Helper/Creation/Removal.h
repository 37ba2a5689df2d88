// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Record.h"
#include "Helper/Creation/RecordWalk.h"
#include "Helper/Creation/Remains.h"

#include <QString>
#include <vector>

namespace Creation {

/// Removes what a record says was made, from the last to the first. What is no longer what was made stays.
class Removal
{
public:
    Removal(FolderLayer &layer, const Record &record)
        : layer_(layer)
        , record_(record)
    {
    }

    void remove(RecordWalk &walk);

    /// What could not be removed although it may be there, and why; for people. Empty if there is nothing.
    QString remains() const { return remains_.text(); }
    /// The same for trying again.
    Record rest() const { return record_.only(kept_); }

private:
    void removeEntry(RecordWalk &walk, qsizetype number);
    void keep(qsizetype number, const QString &reason);

    FolderLayer &layer_;
    const Record &record_;
    Remains remains_;
    std::vector<qsizetype> kept_;
};

} // namespace Creation
