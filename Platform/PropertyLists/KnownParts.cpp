// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KnownParts.h"

#include "Platform/PropertyLists/PropertyListVariant.h"

KnownParts::~KnownParts()
{
    for (Part &part : parts_)
        PropertyList::destroy(part.value);
}

// What has no capacity does not own its bytes.
const void *KnownParts::identity(const QString &text)
{
    return text.size() >= smallest && text.capacity() > 0 ? text.constData() : nullptr;
}

const void *KnownParts::identity(const QByteArray &data)
{
    return data.size() >= smallest && data.capacity() > 0 ? data.constData() : nullptr;
}

const void *KnownParts::identity(const QVariant &value)
{
    if (const QVariantList *array = PropertyList::arrayIn(value))
        return array->isEmpty() || array->isDetached() ? nullptr : array->constData();
    if (const QVariantMap *dictionary = PropertyList::dictionaryIn(value))
        return dictionary->isEmpty() || dictionary->isDetached() ? nullptr : &dictionary->cbegin().value();
    return nullptr;
}

std::optional<KnownParts::Ref> KnownParts::find(const void *identity) const
{
    if (!identity)
        return std::nullopt;
    const auto known = parts_.constFind(identity);
    return known != parts_.constEnd() ? std::optional(known->ref) : std::nullopt;
}

void KnownParts::add(const void *identity, const QVariant &value, Ref ref)
{
    if (identity)
        parts_.insert(identity, {value, ref});
}

void KnownParts::forgetFrom(Ref ref)
{
    parts_.removeIf([ref](const auto &part) { return part.value().ref >= ref; });
}
