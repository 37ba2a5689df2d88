// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListDocument.h"

#include <vector>

/// The objects of a keyed archive as property-list nodes: references are resolved, class wrappers gone.
/// Filled and checked by KeyedArchiveReader; a handle is an index into objects_. Scalars stay in the
/// archive's property list, which this keeps alive.
class KeyedArchiveSource final : public PropertyListSource
{
public:
    explicit KeyedArchiveSource(PropertyListDocument::Ptr archive);

    PropertyListType type(Handle node) const override { return objects_[node].type; }
    QVariant scalar(Handle node) const override;
    const QString &string(Handle node) const override;
    bool boolean(Handle node) const override;
    qsizetype count(Handle node) const override { return objects_[node].count; }
    Handle element(Handle array, qsizetype index) const override
    {
        return references_[objects_[array].first + std::size_t(index)];
    }
    Handle key(Handle dictionary, qsizetype index) const override
    {
        return references_[objects_[dictionary].first + std::size_t(index)];
    }
    Handle valueAt(Handle dictionary, qsizetype index) const override
    {
        return references_[objects_[dictionary].firstValue + std::size_t(index)];
    }

private:
    friend class KeyedArchiveReader;

    /// What a scalar's value is made of.
    enum class Storage : quint8 {
        Property, ///< the archive's own value
        Seconds,  ///< a number there that counts the seconds of a date
        Truth,    ///< a number there that stands for a boolean
        Real,     ///< an integer there that stands for a real
        Text      ///< texts_[first]
    };

    struct Object
    {
        union {
            /// Not a dictionary, or not read yet: the value in the archive's property list.
            Handle property;
            /// A dictionary: the first value in references_.
            Handle firstValue;
        };
        /// A container: the first element or key in references_.
        quint32 first = 0;
        quint32 count = 0;
        PropertyListType type = PropertyListType::Null;
        Storage storage = Storage::Property;
    };

    double number(const Object &object) const;

    PropertyListDocument::Ptr archive_;
    const PropertyListSource &properties_;
    std::vector<Object> objects_;
    std::vector<quint32> references_;
    std::vector<QString> texts_;
};
