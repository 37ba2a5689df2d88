// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/LargeBlockAllocator.h"

#include <QtGlobal>
#include <limits>
#include <optional>

/// Finds values that a writer has stored already: a hash table of numbers (of objects), in the order in which
/// they were added.
///
/// Hash and object stand side by side in one array, so that a search takes one line of memory, and growing
/// takes lines in their order.
class UniqueScalars
{
public:
    UniqueScalars();

    /// The object of this hash for which \a isEqual(object) is true.
    template <class IsEqual>
    std::optional<quint32> find(quint32 hash, IsEqual isEqual) const
    {
        for (std::size_t at = home(hash); slots_[at].object != noObject; at = next(at)) {
            if (slots_[at].hash == hash && isEqual(slots_[at].object))
                return slots_[at].object;
        }
        return std::nullopt;
    }

    /// Has what find() and add() of this hash will look at brought near, without waiting for it.
    void prefetch(quint32 hash) const { __builtin_prefetch(&slots_[home(hash)]); }

    /// \a object must be greater than all before it.
    void add(quint32 hash, quint32 object);

    /// Forgets the objects from \a object on.
    void forgetFrom(quint32 object);

private:
    static constexpr quint32 noObject = std::numeric_limits<quint32>::max();

    struct Slot
    {
        quint32 hash = 0;
        quint32 object = noObject;
    };

    std::size_t home(quint32 hash) const { return hash & (slots_.size() - 1); }
    std::size_t next(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }
    void enter(const Slot &slot);
    void enterAgain(std::size_t tableSize, quint32 end);

    /// A power of two in size, at most half full.
    LargeArray<Slot> slots_;
    std::size_t count_ = 0;
    /// Above all objects.
    quint32 end_ = 0;
};
