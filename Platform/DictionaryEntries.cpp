// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/DictionaryEntries.h"

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

DictionaryEntries DictionaryEntries::withLastOfEachKey(std::span<const Ref> keys, std::span<const Ref> values)
{
    QHash<Ref, std::size_t> lastOf;
    for (std::size_t i = 0; i < keys.size(); ++i)
        lastOf.insert(keys[i], i);
    DictionaryEntries entries;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (lastOf.value(keys[i]) == i) {
            entries.keys.push_back(keys[i]);
            entries.values.push_back(values[i]);
        }
    }
    return entries;
}
