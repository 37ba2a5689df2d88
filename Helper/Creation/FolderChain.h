// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/FileIdentity.h"
#include "Platform/Files/FolderLayer.h"

#include <vector>

namespace Creation {

/// The way from a folder down to one below it, by open descriptors and never through a link. However deep,
/// only a few of the folders are open at a time; a folder that is needed again is opened from below, and it
/// has to be the same one.
class FolderChain
{
public:
    /// How many folders below the first are open; deeper trees are rare, and a process may open 1,024 files.
    static constexpr std::size_t mostOpen = 64;

    /// \a folder, an open descriptor, stays the caller's.
    FolderChain(FolderLayer &layer, int folder);
    ~FolderChain();
    FolderChain(const FolderChain &) = delete;
    FolderChain &operator=(const FolderChain &) = delete;

    /// The folder at the end; -1 after a failure of leave().
    int descriptor() const { return links_.back().descriptor; }
    /// As it was when it was entered.
    const struct stat &information() const { return links_.back().information; }
    /// How many folders below the first.
    std::size_t depth() const { return links_.size() - 1; }

    /// Goes down into the folder \a name, opened with O_RDONLY or O_PATH as \a access. False with errno.
    bool enter(const char *name, int access);
    /// Goes up. False with errno, ESTALE if the folder is no longer in the one it was in.
    bool leave();
    /// So that leave() cannot fail, even if the folder may no longer be searched.
    bool openParent();

private:
    struct Link
    {
        int descriptor;
        int access;
        struct stat information;
    };

    FolderLayer &layer_;
    std::vector<Link> links_;
    /// The links between the first and this one are not open.
    std::size_t firstOpen_ = 1;
};

} // namespace Creation
