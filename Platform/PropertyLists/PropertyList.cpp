// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyList.h"

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Platform/PropertyLists/XMLPropertyListWriter.h"

#include <cmath>
#include <limits>

namespace PropertyList {

namespace {

/// 2001-01-01 00:00 UTC since 1970-01-01 00:00 UTC.
constexpr qint64 epochMilliseconds = 978'307'200'000;
/// Some 285,000 years: up to here a double counts milliseconds one by one.
constexpr double mostMilliseconds = 9'007'199'254'740'992.0;

qsizetype skipBlanks(QStringView text)
{
    qsizetype at = 0;
    while (at < text.size() && text[at].isSpace())
        ++at;
    return at;
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool boolOfString(QStringView text)
{
    text = text.mid(skipBlanks(text));
    if (!text.isEmpty() && (text.front() == u'+' || text.front() == u'-'))
        text = text.mid(1);
    while (!text.isEmpty() && text.front() == u'0')
        text = text.mid(1);
    return !text.isEmpty() && QStringView(u"YyTt123456789").contains(text.front());
}

std::optional<qint64> integerOfString(QStringView text)
{
    text = text.mid(skipBlanks(text));
    const bool negative = text.startsWith(u'-');
    if (negative || text.startsWith(u'+'))
        text = text.mid(1);
    if (text.isEmpty() || !isDigit(text.front()))
        return std::nullopt;
    // Counted downwards, where there is room for one more.
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    qint64 number = 0;
    for (const QChar character : text) {
        if (!isDigit(character))
            break;
        const int digit = character.unicode() - u'0';
        number = number < (least + digit) / 10 ? least : number * 10 - digit;
    }
    if (negative)
        return number;
    return number == least ? std::numeric_limits<qint64>::max() : -number;
}

qint64 saturated(double number)
{
    // 2^63, which a double holds and qint64 does not.
    constexpr double limit = 9'223'372'036'854'775'808.0;
    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<qint64>::max();
    return number < -limit ? std::numeric_limits<qint64>::min() : qint64(number);
}

} // namespace

ReadResult read(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &error);
    if (!document)
        return {std::nullopt, error};
    return {document->root().toVariant(), {}};
}

WriteResult write(const QVariant &value, Form form)
{
    if (form == Form::XML)
        return XMLPropertyListWriter::write(value);
    BinaryPropertyListWriter writer;
    const BinaryPropertyListWriter::Ref top = writer.value(value);
    return writer.finish(top);
}

QVariant dateValue(double seconds)
{
    const double milliseconds = seconds * 1000;
    if (std::abs(milliseconds) < mostMilliseconds) {
        const qint64 whole = std::llround(milliseconds);
        if (Date{double(whole) / 1000} == Date{seconds})
            return QDateTime::fromMSecsSinceEpoch(epochMilliseconds + whole, Qt::UTC);
    }
    return QVariant::fromValue(Date{seconds});
}

std::optional<double> dateSeconds(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<Date>())
        return value.value<Date>().seconds;
    const QDateTime dateTime = value.typeId() == QMetaType::QDateTime ? value.toDateTime() : QDateTime();
    if (!dateTime.isValid())
        return std::nullopt;
    const qint64 milliseconds = dateTime.toMSecsSinceEpoch();
    // The subtraction in whole numbers is exact; far from today there is no room for it.
    if (std::abs(double(milliseconds)) < mostMilliseconds)
        return double(milliseconds - epochMilliseconds) / 1000;
    return (double(milliseconds) - double(epochMilliseconds)) / 1000;
}

std::optional<bool> boolValue(const QVariant &value)
{
    switch (typeOf(value).value_or(PropertyListType::Null)) {
    case PropertyListType::Boolean:
        return value.toBool();
    case PropertyListType::Integer:
        return value.toULongLong() != 0;
    case PropertyListType::Real:
        return value.toDouble() != 0;
    case PropertyListType::String:
        return boolOfString(value.toString());
    default:
        return std::nullopt;
    }
}

std::optional<qint64> integerValue(const QVariant &value)
{
    switch (typeOf(value).value_or(PropertyListType::Null)) {
    case PropertyListType::Boolean:
        return value.toBool() ? 1 : 0;
    case PropertyListType::Integer:
        if (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong)
            return qint64(std::min<quint64>(value.toULongLong(), std::numeric_limits<qint64>::max()));
        return value.toLongLong();
    case PropertyListType::Real:
        return saturated(value.toDouble());
    case PropertyListType::String:
        return integerOfString(value.toString());
    default:
        return std::nullopt;
    }
}

} // namespace PropertyList
