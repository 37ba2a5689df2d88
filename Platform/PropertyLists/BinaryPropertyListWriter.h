// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/KnownParts.h"
#include "Platform/PropertyLists/LargeBlockAllocator.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListNode.h"
#include "Platform/PropertyLists/UniqueScalars.h"

#include <optional>
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
    /// An invalid one is no property list.
    Ref date(const QDateTime &value);
    Ref date(PropertyList::Date value);
    Ref data(QByteArrayView value);
    Ref data(const QByteArray &value);
    Ref string(QStringView value);
    Ref string(const QString &value);
    /// The same in two steps, for a caller that knows its strings some time before it adds them: the first
    /// has what the second will look for brought near in memory, without waiting. The text must live as long.
    struct ComingString
    {
        QStringView text;
        quint32 hash = 0;
        /// Of a long one, which is known by its place in memory.
        const QString *owner = nullptr;
    };
    ComingString coming(QStringView value) const;
    ComingString coming(const QString &value) const
    {
        return value.size() < KnownParts::smallest ? coming(QStringView(value)) : comingLong(value);
    }
    Ref string(const ComingString &value);
    Ref uid(quint64 value);
    /// For a UID that the caller adds once: it is not looked for among the scalars, nor found by uid().
    Ref unsharedUID(quint64 value);
    Ref array(std::span<const Ref> elements);
    /// As many keys as values. Keys must be strings; where one repeats, the last entry counts and the others
    /// are not written.
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values);

    /// A whole value. A type that is no property list makes finish() fail. Containers that the value shares
    /// are written once.
    Ref value(const QVariant &value);
    /// The containers of one document that have been written.
    using WrittenNodes = QHash<PropertyListSource::Handle, Ref>;
    /// A whole value of a parsed document, without materialising it; shared containers stay shared, also with
    /// other values of the document that were written with the same \a written.
    Ref value(const PropertyListNode &node, WrittenNodes &written);
    Ref value(const PropertyListNode &node);
    /// The characters of a string.
    std::size_t length(Ref string) const;

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

private:
    enum class Kind : quint8 { Invalid, UnsharedScalar, Scalar, String, Array, Dictionary };

    struct Object
    {
        /// Of a scalar: its place in bytes_; of a container: its place in references_.
        quint32 first = 0;
        /// Of a scalar: its bytes; of a container: its elements or entries.
        quint32 count = 0;
        /// As PropertyList::Limits counts it; saturated.
        quint32 cost = 1;
        /// Levels of containers, itself included; saturated.
        quint16 depth = 0;
        Kind kind = Kind::Scalar;
    };

    ComingString comingLong(const QString &value) const;
    Ref longString(const ComingString &value);
    Ref scalar(PropertyListType type, const QVariant &value);
    quint8 *grow(std::size_t size);
    void encodeUID(quint64 value);
    Ref intern(std::size_t start);
    Ref intern(std::size_t start, Kind kind, quint32 hash);
    Ref container(Kind kind, std::span<const Ref> keys, std::span<const Ref> values);
    Ref invalid(const QString &reason);

    LargeArray<Object> objects_;
    /// Of all containers; a dictionary's keys stand before its values.
    LargeArray<Ref> references_;
    /// All scalars, encoded.
    LargeArray<quint8> bytes_;
    UniqueScalars scalars_;
    KnownParts known_;
    std::size_t seed_;
    /// The object that stands for every value that cannot be written.
    std::optional<Ref> invalid_;
    QString invalidReason_;
};
