// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListDocument.h"

#include <QHash>

#include <vector>

/// A property list whose values are in memory, in flat arrays: what the XML reader fills, and what stands
/// around a QVariant. Built from the leaves up; each call adds one value and returns its handle.
class PropertyListValues final : public PropertyListSource
{
public:
    /// A null, boolean, integer, real, date, data or UID.
    Handle addScalar(PropertyListType type, const QVariant &value);
    Handle addString(const QString &text);
    /// The same handle for the same text.
    Handle addKey(const QString &text);
    Handle addArray(const Handle *elements, std::size_t count);
    /// \a entries holds \a count pairs of a key, made by addKey(), and a value.
    Handle addDictionary(const Handle *entries, std::size_t count);
    /// A whole value; a part that is no property list becomes null.
    Handle addValue(const QVariant &value);

    PropertyListType type(Handle node) const override { return nodes_[node].type; }
    QVariant scalar(Handle node) const override;
    const QString &string(Handle node) const override { return strings_[nodes_[node].first]; }
    bool boolean(Handle node) const override { return scalars_[nodes_[node].first].toBool(); }
    qsizetype count(Handle node) const override { return qsizetype(nodes_[node].count); }
    Handle element(Handle array, qsizetype index) const override;
    Handle key(Handle dictionary, qsizetype index) const override;
    Handle valueAt(Handle dictionary, qsizetype index) const override;

private:
    struct Node
    {
        /// Its place in strings_, scalars_ or references_.
        quint32 first = 0;
        quint32 count = 0;
        PropertyListType type = PropertyListType::Null;
    };

    Handle add(const Node &node);
    Handle addLeaf(const QVariant &value);

    std::vector<Node> nodes_;
    std::vector<QString> strings_;
    std::vector<QVariant> scalars_;
    std::vector<quint32> references_;
    QHash<QString, Handle> keys_;
    /// The keys of the dictionary that is being added.
    std::vector<quint32> keysOfOne_;
};
