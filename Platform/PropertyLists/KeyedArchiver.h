// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"

#include <QHash>
#include <array>

/// Writes a keyed archive: a property list with "$version" 100000, "$archiver" "NSKeyedArchiver",
/// "$top" {"root": UID} and "$objects", as the original platform lays it out. Binary form.
///
/// Built from the leaves up like BinaryPropertyListWriter, with the same meaning of each call; equal strings,
/// numbers, dates and data share one UID. Dictionaries and arrays are written with the mutable classes
/// ("NSMutableDictionary", "NSMutableArray") or the plain ones as asked.
class KeyedArchiver
{
public:
    /// Stands for an archived object: its UID.
    using Ref = quint32;
    enum class Mutability { Mutable, Immutable };

    KeyedArchiver();

    /// As the root it is no object at all; in a container, which cannot hold that, it is the null object.
    Ref null() const { return 0; }
    Ref boolean(bool value);
    Ref integer(qint64 value);
    Ref unsignedInteger(quint64 value);
    Ref real(double value);
    Ref date(const QDateTime &value);
    Ref date(PropertyList::Date value);
    Ref data(QByteArrayView value);
    Ref data(const QByteArray &value);
    Ref string(QStringView value);
    Ref string(const QString &value);
    /// The same in two steps, as BinaryPropertyListWriter has them.
    using ComingString = BinaryPropertyListWriter::ComingString;
    ComingString coming(QStringView value) const { return writer_.coming(value); }
    ComingString coming(const QString &value) const { return writer_.coming(value); }
    Ref string(const ComingString &value);
    Ref array(std::span<const Ref> elements, Mutability mutability = Mutability::Mutable);
    /// As many keys as values. Keys must be strings; where one repeats, the last entry counts and the others
    /// are not written.
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values,
                   Mutability mutability = Mutability::Mutable);
    /// A whole value. A type that an archive cannot hold makes finish() fail. Containers that the value
    /// shares are archived once.
    Ref value(const QVariant &value);
    /// A whole value of a parsed document, without materialising it; shared containers stay shared.
    Ref value(const PropertyListNode &node);

    /// The archive whose root object is \a root, holding every object added so far; may be called again
    /// after more were added.
    PropertyList::WriteResult finish(Ref root);

    /// The archive of one value.
    static PropertyList::WriteResult archivedDataWithRootObject(const QVariant &root);

private:
    using PropertyRef = BinaryPropertyListWriter::Ref;

    struct Object
    {
        /// What stands in "$objects".
        PropertyRef property = 0;
        /// The reference to it, as a property list.
        PropertyRef uid = 0;
        /// As PropertyList::Limits counts it, of what is archived; saturated.
        quint32 cost = 1;
        /// Levels of containers, itself included; saturated.
        quint16 depth = 0;
        bool isString = false;
    };
    /// The classes written, as indices of classes_.
    enum ClassIndex : quint8 {
        MutableDictionaryClass,
        DictionaryClass,
        MutableArrayClass,
        ArrayClass,
        MutableStringClass,
        DateClass,
        NullClass,
        ClassCount
    };

    Ref add(const Object &object);
    /// The one object that \a property is, which the property-list writer shares for equal scalars.
    Ref shared(PropertyRef property, bool isString = false);
    Ref scalar(const QVariant &value);
    Ref scalar(const PropertyListNode &node);
    PropertyRef uidOfClass(ClassIndex index);
    Ref nullObject();
    PropertyRef uidArray(std::span<const Ref> refs);
    /// Of an array with these elements or a dictionary with these values and so many keys.
    Object containerOf(std::span<const Ref> parts, std::size_t keys);
    /// Makes finish() fail; the first reason counts.
    Ref invalid(const QString &reason);

    BinaryPropertyListWriter writer_;
    LargeArray<Object> objects_;
    /// Of a property list that shared() made an object of, the UID; else 0.
    LargeArray<Ref> uidOfProperty_;
    /// The dates, by the property list of their seconds.
    QHash<PropertyRef, Ref> dates_;
    std::array<Ref, ClassCount> classes_{};
    Ref nullMarkerString_ = 0;
    Ref nullObject_ = 0;
    std::vector<PropertyRef> scratch_;
    KnownParts known_;
    quint64 ownCost_ = 0;
    QString error_;
};
