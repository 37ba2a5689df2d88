// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/FolderChain.h"
#include "Helper/Creation/Record.h"

#include <vector>

namespace Creation {

/// Goes to the folders of a record, each of which has to be the one that was recorded. A folder that was made
/// and whose owner may not do everything in it is unlocked on the way.
class RecordWalk
{
public:
    /// \a target, an open descriptor, stays the caller's. \a record outlives this.
    RecordWalk(FolderLayer &layer, const Record &record, int target);

    /// The mode of a folder that its owner may do everything in, and that is else like \a mode.
    static mode_t unlocked(mode_t mode);

    /// The descriptor (O_PATH) of a folder, Record::inTarget for the target; it holds until the next call. -1
    /// with errno, ESTALE if something else is there.
    int enter(qint32 folder);
    /// Gives the folders that were unlocked the modes that they had.
    void lockAgain();

private:
    bool enterChild(qint32 folder);

    FolderLayer &layer_;
    const Record &record_;
    FolderChain chain_;
    /// The entries on the chain, below the target.
    std::vector<qint32> way_;
    std::vector<qint32> unlocked_;
};

} // namespace Creation
