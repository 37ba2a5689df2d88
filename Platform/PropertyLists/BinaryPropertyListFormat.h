// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtEndian>
#include <array>

/// The binary property list, version "00".
///
/// A header of 8 bytes; the objects; the offset table, one offset for each object, whose index is what
/// references mean; a trailer of 32 bytes. All numbers are big-endian. An object begins with a marker: its
/// type in the high four bits and in the low four either a size as a power of two or a count. The count 15
/// says that an integer object with the real count follows.
namespace BinaryPropertyListFormat {

inline constexpr std::array<char, 8> header{'b', 'p', 'l', 'i', 's', 't', '0', '0'};

/// The trailer: 5 unused bytes, sort version, offset size and reference size, one byte each; then the
/// number of objects, the top object and the place of the offset table, 8 bytes each.
inline constexpr qsizetype trailerSize = 32;
inline constexpr qsizetype trailerOffsetSize = 6;
inline constexpr qsizetype trailerReferenceSize = 7;
inline constexpr qsizetype trailerObjectCount = 8;
inline constexpr qsizetype trailerTopObject = 16;
inline constexpr qsizetype trailerOffsetTable = 24;

/// Whole markers.
inline constexpr quint8 nullMarker = 0x00;
inline constexpr quint8 falseMarker = 0x08;
inline constexpr quint8 trueMarker = 0x09;
inline constexpr quint8 floatMarker = 0x22;
inline constexpr quint8 doubleMarker = 0x23;
inline constexpr quint8 dateMarker = 0x33;

/// The high four bits of a marker.
namespace Type {
inline constexpr quint8 simple = 0x0;
inline constexpr quint8 integer = 0x1;
inline constexpr quint8 real = 0x2;
inline constexpr quint8 date = 0x3;
inline constexpr quint8 data = 0x4;
inline constexpr quint8 asciiString = 0x5;
inline constexpr quint8 utf16String = 0x6;
inline constexpr quint8 uid = 0x8;
inline constexpr quint8 array = 0xA;
inline constexpr quint8 dictionary = 0xD;
} // namespace Type

/// The count that says that an integer object with the count follows.
inline constexpr quint8 countFollows = 15;

inline constexpr quint8 marker(quint8 type, quint8 low)
{
    return quint8(type << 4 | low);
}

/// \a size bytes, 1 to 8, at \a from.
inline quint64 load(const uchar *from, qsizetype size)
{
    switch (size) {
    case 1:
        return *from;
    case 2:
        return qFromBigEndian<quint16>(from);
    case 4:
        return qFromBigEndian<quint32>(from);
    case 8:
        return qFromBigEndian<quint64>(from);
    default: {
        quint64 value = 0;
        for (qsizetype i = 0; i < size; ++i)
            value = value << 8 | from[i];
        return value;
    }
    }
}

/// The \a size bytes, 1 to 8, before \a end. The eight bytes before it must be there, as they are behind the
/// header.
inline quint64 loadBefore(const uchar *end, quint64 size)
{
    return qFromBigEndian<quint64>(end - sizeof(quint64)) & (~quint64(0) >> 8 * (sizeof(quint64) - size));
}

} // namespace BinaryPropertyListFormat
