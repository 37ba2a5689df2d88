// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/LargeBlockAllocator.h"

#include <QtGlobal>
#include <optional>
#include <vector>

/// Finds values that a writer has stored already: a hash table of numbers (of objects), in the order in which
/// they were added.
///
/// What a search touches first is one byte for each place of the table: seven bits of the hash, so that a
/// table of millions stays in the processor's cache, and a value that is new is seldom looked for in memory.
class UniqueScalars
{
public:
    UniqueScalars();

    /// The object of this hash for which \a isEqual(object) is true.
    template <class IsEqual>
    std::optional<quint32> find(quint32 hash, IsEqual isEqual) const
    {
        const quint8 tag = tagOf(hash);
        const std::size_t mask = tags_.size() - 1;
        for (std::size_t at = hash & mask; tags_[at] != freeTag; at = (at + 1) & mask) {
            if (tags_[at] != tag)
                continue;
            const Scalar &scalar = scalars_[places_[at]];
            if (scalar.hash == hash && isEqual(scalar.object))
                return scalar.object;
        }
        return std::nullopt;
    }

    /// \a object must be greater than all before it.
    void add(quint32 hash, quint32 object);

    /// Forgets the objects from \a object on.
    void forgetFrom(quint32 object);

private:
    static constexpr quint8 freeTag = 0;
    static quint8 tagOf(quint32 hash) { return quint8(0x80 | (hash >> 25)); }

    struct Scalar
    {
        quint32 hash;
        quint32 object;
    };

    void enter(std::size_t index);
    void enterAll(std::size_t tableSize);

    std::vector<Scalar, LargeBlockAllocator<Scalar>> scalars_;
    /// The table: a power of two in size, at most half full; places_ holds indexes into scalars_.
    std::vector<quint8, LargeBlockAllocator<quint8>> tags_;
    std::vector<quint32, LargeBlockAllocator<quint32>> places_;
};
