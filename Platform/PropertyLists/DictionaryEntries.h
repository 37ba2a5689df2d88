// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <span>
#include <vector>

/// The entries of a dictionary that is about to be made; equal keys are equal references.
struct DictionaryEntries
{
    using Ref = quint32;

    static bool hasRepeatedKey(std::span<const Ref> keys);
    /// As many \a keys as \a values. Of entries with one key only the last is left, in its place.
    static DictionaryEntries withLastOfEachKey(std::span<const Ref> keys, std::span<const Ref> values);
    /// The positions of those entries, in order.
    static std::vector<quint32> positionsOfLast(std::span<const Ref> keys);

    std::vector<Ref> keys;
    std::vector<Ref> values;
};
