// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QtEndian>

/// What the file manager keeps of a file or folder, as the bytes of an attribute: 16 bytes that have a
/// meaning here, numbers with their high byte first,
///
///     0  type (four-character code)      8  flags
///     4  creator                        10  icon position, vertical, then horizontal (12), both signed
///
/// and 16 or more that only others know. A change of one field leaves every other bit as it is. Folders keep
/// a rectangle where files have type and creator; it reads, and is overwritten, as if it were those.
class FinderInfo
{
public:
    static constexpr qsizetype attributeSize = 32;

    static constexpr quint16 labelMask = 0x000E;
    static constexpr int labelShift = 1;
    static constexpr quint16 hasBeenInited = 0x0100;
    static constexpr quint16 hasCustomIcon = 0x0400;

    /// All zero, as of an entry that has no attribute.
    FinderInfo()
        : FinderInfo(QByteArray())
    {
    }
    /// Of an attribute of any length: a short one goes on with zeros, a long one is kept to its end.
    explicit FinderInfo(const QByteArray &attribute)
        : attribute_(attribute.leftJustified(attributeSize, '\0'))
    {
    }

    QByteArray attribute() const { return attribute_; }

    quint32 type() const { return read<quint32>(typeOffset); }
    void setType(quint32 type) { write(typeOffset, type); }
    quint32 creator() const { return read<quint32>(creatorOffset); }
    void setCreator(quint32 creator) { write(creatorOffset, creator); }
    quint16 flags() const { return read<quint16>(flagsOffset); }
    void setFlags(quint16 flags) { write(flagsOffset, flags); }
    qint16 vertical() const { return read<qint16>(verticalOffset); }
    void setVertical(qint16 vertical) { write(verticalOffset, vertical); }
    qint16 horizontal() const { return read<qint16>(horizontalOffset); }
    void setHorizontal(qint16 horizontal) { write(horizontalOffset, horizontal); }

private:
    static constexpr qsizetype typeOffset = 0;
    static constexpr qsizetype creatorOffset = 4;
    static constexpr qsizetype flagsOffset = 8;
    static constexpr qsizetype verticalOffset = 10;
    static constexpr qsizetype horizontalOffset = 12;

    template <typename Number>
    Number read(qsizetype offset) const
    {
        return qFromBigEndian<Number>(attribute_.constData() + offset);
    }
    template <typename Number>
    void write(qsizetype offset, Number number)
    {
        qToBigEndian(number, attribute_.data() + offset);
    }

    QByteArray attribute_;
};
