// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/UniqueScalars.h"

namespace {

constexpr std::size_t firstTableSize = 64;

} // namespace

UniqueScalars::UniqueScalars()
    : tags_(firstTableSize, freeTag)
    , places_(firstTableSize)
{
}

void UniqueScalars::enter(std::size_t index)
{
    const quint32 hash = scalars_[index].hash;
    const std::size_t mask = tags_.size() - 1;
    std::size_t at = hash & mask;
    while (tags_[at] != freeTag)
        at = (at + 1) & mask;
    tags_[at] = tagOf(hash);
    places_[at] = quint32(index);
}

void UniqueScalars::enterAll(std::size_t tableSize)
{
    tags_.assign(tableSize, freeTag);
    places_.resize(tableSize);
    for (std::size_t i = 0; i < scalars_.size(); ++i)
        enter(i);
}

void UniqueScalars::add(quint32 hash, quint32 object)
{
    scalars_.push_back({hash, object});
    if (scalars_.size() * 2 > tags_.size())
        enterAll(tags_.size() * 2);
    else
        enter(scalars_.size() - 1);
}

void UniqueScalars::forgetFrom(quint32 object)
{
    if (scalars_.empty() || scalars_.back().object < object)
        return;
    while (!scalars_.empty() && scalars_.back().object >= object)
        scalars_.pop_back();
    enterAll(tags_.size());
}
