// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListFormat.h"

#include <QByteArray>
#include <vector>

/// A binary property list by hand, object by object, with whatever in it no writer of ours would write:
/// repeated keys, containers referred to more than once, cycles, integers and offsets of any width.
class BinaryDocument
{
public:
    using Ref = quint32;
    using Refs = std::vector<Ref>;

    /// Marker and content as they are.
    Ref raw(const QByteArray &bytes) { return add({bytes, {}}); }
    Ref string(const QByteArray &ascii)
    {
        return raw(prefix(BinaryPropertyListFormat::Type::asciiString, ascii.size()) + ascii);
    }
    Ref data(const QByteArray &bytes)
    {
        return raw(prefix(BinaryPropertyListFormat::Type::data, bytes.size()) + bytes);
    }
    /// UTF-16, whatever the characters.
    Ref wideString(QStringView text)
    {
        QByteArray bytes = prefix(BinaryPropertyListFormat::Type::utf16String, text.size());
        for (const QChar character : text)
            append(bytes, character.unicode(), 2);
        return raw(bytes);
    }
    Ref boolean(bool value)
    {
        return raw(QByteArray(
            1, char(value ? BinaryPropertyListFormat::trueMarker : BinaryPropertyListFormat::falseMarker)));
    }
    Ref uid(quint32 value)
    {
        QByteArray bytes(1, char(BinaryPropertyListFormat::marker(BinaryPropertyListFormat::Type::uid, 3)));
        append(bytes, value, 4);
        return raw(bytes);
    }
    /// An integer of 2^exponent bytes.
    Ref integer(const QByteArray &bigEndian, quint8 exponent)
    {
        return raw(QByteArray(1, char(BinaryPropertyListFormat::marker(
                                     BinaryPropertyListFormat::Type::integer, exponent))) +
                   bigEndian);
    }
    Ref array(const Refs &elements)
    {
        return add({prefix(BinaryPropertyListFormat::Type::array, qsizetype(elements.size())), elements});
    }
    Ref dictionary(Refs keys, const Refs &values)
    {
        const QByteArray marker = prefix(BinaryPropertyListFormat::Type::dictionary, qsizetype(keys.size()));
        keys.insert(keys.end(), values.begin(), values.end());
        return add({marker, keys});
    }
    quint32 size() const { return quint32(objects_.size()); }

    /// With offsets of the least size that fits, or of the given one.
    QByteArray bytes(Ref top, int offsetSize = 0) const
    {
        const int referenceSize = leastSize(objects_.size());
        QByteArray result(BinaryPropertyListFormat::header.data(), BinaryPropertyListFormat::header.size());
        std::vector<quint64> offsets;
        for (const Object &object : objects_) {
            offsets.push_back(quint64(result.size()));
            result += object.content;
            for (const Ref reference : object.references)
                append(result, reference, referenceSize);
        }
        const quint64 table = quint64(result.size());
        const int width = offsetSize > 0 ? offsetSize : leastSize(table);
        for (const quint64 offset : offsets)
            append(result, offset, width);
        result += QByteArray(BinaryPropertyListFormat::trailerOffsetSize, '\0');
        result += char(width);
        result += char(referenceSize);
        append(result, objects_.size(), 8);
        append(result, top, 8);
        append(result, table, 8);
        return result;
    }

    static void append(QByteArray &to, quint64 number, int size)
    {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            to.append(char(number >> shift));
    }

private:
    struct Object
    {
        QByteArray content;
        Refs references;
    };

    Ref add(const Object &object)
    {
        objects_.push_back(object);
        return Ref(objects_.size() - 1);
    }
    static int leastSize(quint64 number)
    {
        int size = 1;
        while (size < 8 && number >> 8 * size != 0)
            ++size;
        return size;
    }
    static QByteArray prefix(quint8 type, qsizetype count)
    {
        using namespace BinaryPropertyListFormat;
        if (count < countFollows)
            return QByteArray(1, char(marker(type, quint8(count))));
        QByteArray result(1, char(marker(type, countFollows)));
        result += char(marker(Type::integer, 2));
        append(result, quint64(count), 4);
        return result;
    }

    std::vector<Object> objects_;
};
