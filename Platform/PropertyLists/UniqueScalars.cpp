// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/UniqueScalars.h"

#include <utility>

namespace {

constexpr std::size_t firstTableSize = 64;

} // namespace

UniqueScalars::UniqueScalars()
    : slots_(firstTableSize)
{
}

void UniqueScalars::enter(const Slot &slot)
{
    std::size_t at = home(slot.hash);
    while (slots_[at].object != noObject)
        at = next(at);
    slots_[at] = slot;
    ++count_;
}

/// Those below \a end, in a new table. A place in a table of twice the size is the old one or as far into the
/// second half: the old table's order touches both halves in theirs.
void UniqueScalars::enterAgain(std::size_t tableSize, quint32 end)
{
    const LargeArray<Slot> slots = std::exchange(slots_, LargeArray<Slot>(tableSize));
    count_ = 0;
    for (const Slot &slot : slots) {
        if (slot.object < end)
            enter(slot);
    }
}

void UniqueScalars::add(quint32 hash, quint32 object)
{
    if ((count_ + 1) * 2 > slots_.size())
        enterAgain(slots_.size() * 2, noObject);
    enter({hash, object});
    end_ = object + 1;
}

void UniqueScalars::forgetFrom(quint32 object)
{
    if (end_ <= object)
        return;
    enterAgain(slots_.size(), object);
    end_ = object;
}
