// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/RecordWalk.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace Creation {

namespace {

constexpr mode_t ownerRights = 0700;

} // namespace

RecordWalk::RecordWalk(FolderLayer &layer, const Record &record, int target)
    : layer_(layer)
    , record_(record)
    , chain_(layer, target)
{
}

mode_t RecordWalk::unlocked(mode_t mode)
{
    return mode | ownerRights;
}

int RecordWalk::enter(qint32 folder)
{
    // Up from the wanted folder to one that is on the way already; their numbers increase downwards.
    std::vector<qint32> missing;
    qint32 common = folder;
    while (common != Record::inTarget && !std::binary_search(way_.cbegin(), way_.cend(), common)) {
        missing.push_back(common);
        common = record_.entries[static_cast<std::size_t>(common)].folder;
    }
    while (!way_.empty() && way_.back() != common) {
        way_.pop_back();
        if (!chain_.leave())
            return -1;
    }
    while (!missing.empty()) {
        if (!enterChild(missing.back()))
            return -1;
        missing.pop_back();
    }
    return chain_.descriptor();
}

bool RecordWalk::enterChild(qint32 folder)
{
    const Record::Entry &entry = record_.entries[static_cast<std::size_t>(folder)];
    if (!chain_.enter(entry.name.constData(), O_PATH))
        return false;
    way_.push_back(folder);
    const struct stat &information = chain_.information();
    int error = FileIdentity(information) == entry.identity ? 0 : ESTALE;
    const mode_t mode = information.st_mode & ALLPERMS;
    if (error == 0 && entry.isMade() && mode != unlocked(mode)) {
        if (layer_.chmodOpen(chain_.descriptor(), unlocked(mode)) == -1)
            error = errno;
        else
            unlocked_.push_back(folder);
    }
    if (error == 0)
        return true;
    way_.pop_back();
    chain_.leave();
    errno = error;
    return false;
}

void RecordWalk::lockAgain()
{
    while (!unlocked_.empty()) {
        const qint32 folder = unlocked_.back();
        const Record::Entry &entry = record_.entries[static_cast<std::size_t>(folder)];
        if (enter(folder) != -1 && chain_.openParent())
            layer_.chmodOpen(chain_.descriptor(), entry.mode);
        unlocked_.pop_back();
    }
}

} // namespace Creation
