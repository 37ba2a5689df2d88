// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/BinaryPropertyListWriter.h"

#include <QHash>

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

    Ref null() const { return 0; }
    Ref boolean(bool value);
    Ref integer(qint64 value);
    Ref unsignedInteger(quint64 value);
    Ref real(double value);
    Ref date(const QDateTime &value);
    Ref data(QByteArrayView value);
    Ref string(QStringView value);
    Ref array(std::span<const Ref> elements, Mutability mutability = Mutability::Mutable);
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values,
                   Mutability mutability = Mutability::Mutable);
    Ref value(const QVariant &value);
    Ref value(const PropertyListNode &node);

    /// The archive whose root object is \a root.
    PropertyList::WriteResult finish(Ref root);

    /// The archive of one value.
    static PropertyList::WriteResult archivedDataWithRootObject(const QVariant &root);
};
