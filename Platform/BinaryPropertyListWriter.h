// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyList.h"
#include "Platform/PropertyListNode.h"

#include <span>
#include <vector>

/// Builds a binary property list from the leaves up: every call adds one value and returns its reference, and
/// a container is made of the references of its parts. Equal scalars of one type are stored once (1, true
/// and 1.0 are three values). References stay valid, and finish() may be called again after more values were
/// added.
///
/// The functions that add never fail; a value over a limit of PropertyList.h makes finish() fail.
class BinaryPropertyListWriter
{
public:
    using Ref = quint32;

    BinaryPropertyListWriter();

    Ref null();
    Ref boolean(bool value);
    Ref integer(qint64 value);
    Ref unsignedInteger(quint64 value);
    Ref real(double value);
    Ref date(const QDateTime &value);
    Ref data(QByteArrayView value);
    Ref string(QStringView value);
    Ref uid(quint64 value);
    Ref array(std::span<const Ref> elements);
    /// Keys must be strings and differ from each other.
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values);

    /// A whole value. A type that is no property list makes finish() fail.
    Ref value(const QVariant &value);
    /// A whole value of a parsed document, without materialising it; shared containers stay shared.
    Ref value(const PropertyListNode &node);

    /// The state to come back to with rewind().
    struct Mark
    {
        std::size_t objects = 0;
        std::size_t references = 0;
        std::size_t bytes = 0;
    };
    Mark mark() const;
    /// Forgets everything added since; references made since are invalid.
    void rewind(const Mark &mark);

    /// The document whose top object is \a top, holding every value added so far. Offset and reference sizes
    /// are the least that fit.
    PropertyList::WriteResult finish(Ref top) const;
};
