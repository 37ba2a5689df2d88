// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/DictionaryEntries.h"

#include <QHash>
#include <algorithm>

/// Up to here, looking for a repeated key pair by pair is faster than sorting.
static constexpr std::size_t fewKeys = 16;

bool DictionaryEntries::hasRepeatedKey(std::span<const Ref> keys)
{
    if (keys.size() <= fewKeys) {
        for (auto key = keys.begin(); key != keys.end(); ++key) {
            if (std::find(keys.begin(), key, *key) != key)
                return true;
        }
        return false;
    }
    std::vector<Ref> sorted(keys.begin(), keys.end());
    std::sort(sorted.begin(), sorted.end());
    return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

std::vector<quint32> DictionaryEntries::positionsOfLast(std::span<const Ref> keys)
{
    QHash<Ref, quint32> lastOf;
    for (std::size_t i = 0; i < keys.size(); ++i)
        lastOf.insert(keys[i], quint32(i));
    std::vector<quint32> positions(lastOf.cbegin(), lastOf.cend());
    std::sort(positions.begin(), positions.end());
    return positions;
}

DictionaryEntries DictionaryEntries::withLastOfEachKey(std::span<const Ref> keys, std::span<const Ref> values)
{
    DictionaryEntries entries;
    for (const quint32 position : positionsOfLast(keys)) {
        entries.keys.push_back(keys[position]);
        entries.values.push_back(values[position]);
    }
    return entries;
}
