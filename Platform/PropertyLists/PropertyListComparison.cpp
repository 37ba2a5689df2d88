// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListComparison.h"

#include <QHash>

#include <bit>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<PropertyListNode, PropertyListNode>>;

bool areEqualScalars(const PropertyListNode &one, const PropertyListNode &other)
{
    if (one.isString())
        return one.string() == other.string();
    const QVariant value = one.toVariant();
    const QVariant otherValue = other.toVariant();
    // The same bits, so that what is not a number equals itself.
    if (one.type() == PropertyListType::Real)
        return std::bit_cast<quint64>(value.toDouble()) == std::bit_cast<quint64>(otherValue.toDouble());
    return value.metaType() == otherValue.metaType() && value == otherValue;
}

QHash<QString, PropertyListNode> entriesOf(const PropertyListNode &dictionary)
{
    QHash<QString, PropertyListNode> entries;
    entries.reserve(dictionary.count());
    for (qsizetype i = 0; i < dictionary.count(); ++i)
        entries.insert(dictionary.keyAt(i), dictionary.valueAt(i));
    return entries;
}

bool haveTheSameKeysInOrder(const PropertyListNode &one, const PropertyListNode &other)
{
    if (one.count() != other.count())
        return false;
    for (qsizetype i = 0; i < one.count(); ++i) {
        if (one.keyAt(i) != other.keyAt(i))
            return false;
    }
    return true;
}

/// Adds the pairs of values that have to be equal; false if the keys are not.
bool addEntries(const PropertyListNode &one, const PropertyListNode &other, Pairs &pairs)
{
    if (haveTheSameKeysInOrder(one, other)) {
        for (qsizetype i = 0; i < one.count(); ++i)
            pairs.emplace_back(one.valueAt(i), other.valueAt(i));
        return true;
    }
    const QHash<QString, PropertyListNode> entries = entriesOf(one);
    const QHash<QString, PropertyListNode> otherEntries = entriesOf(other);
    if (entries.size() != otherEntries.size())
        return false;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const auto found = otherEntries.find(entry.key());
        if (found == otherEntries.end())
            return false;
        pairs.emplace_back(*entry, *found);
    }
    return true;
}

} // namespace

bool PropertyListComparison::areEqual(const PropertyListNode &one, const PropertyListNode &other)
{
    Pairs pairs{{one, other}};
    while (!pairs.empty()) {
        const auto [left, right] = pairs.back();
        pairs.pop_back();
        if (left.type() != right.type())
            return false;
        if (left.isDictionary()) {
            if (!addEntries(left, right, pairs))
                return false;
        } else if (left.isArray()) {
            if (left.count() != right.count())
                return false;
            for (qsizetype i = 0; i < left.count(); ++i)
                pairs.emplace_back(left.at(i), right.at(i));
        } else if (!left.isNull() && !areEqualScalars(left, right)) {
            return false;
        }
    }
    return true;
}
