// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVariant>
#include <algorithm>
#include <bit>
#include <optional>

/// Property-list serialisation: the binary form ("bplist00") and the XML form, read and written.
///
/// A property list as values: QString, bool, qlonglong (qulonglong above 2^63-1), double, QDateTime (UTC) or
/// PropertyList::Date, QByteArray, QVariantList, QVariantMap; QVariant() stands for the binary form's null,
/// PropertyList::UID for the references of keyed archives.
namespace PropertyList {

/// A reference of a keyed archive (binary marker 0x8n). XML has no form of its own for it.
struct UID
{
    quint64 value = 0;
    friend bool operator==(const UID &, const UID &) = default;
};

/// A date that a QDateTime cannot hold exactly: one finer than a millisecond, beyond its range, or not a
/// finite number. It is kept as stored, so that what passes through here is not rounded.
struct Date
{
    /// Since 2001-01-01 00:00 UTC.
    double seconds = 0;
    /// The same bits, so that a date that is not a number equals itself.
    friend bool operator==(const Date &left, const Date &right)
    {
        return std::bit_cast<quint64>(left.seconds) == std::bit_cast<quint64>(right.seconds);
    }
};

enum class Form { Binary, XML };

/// Reader and writers share these, so that nothing is ever written that a reader would refuse. A document
/// over a limit is unreadable as a whole, never read in part.
namespace Limits {
/// A path has at most 4,096 bytes, so 2,047 folders deep at two levels of property list each; twice that.
inline constexpr int depth = 8192;
/// Far above any real domain, and still a size that fits memory several times over.
inline constexpr qint64 inputSize = qint64(256) * 1024 * 1024;
/// A name of a dictionary entry. Names are compared whenever a dictionary is made, and a shared one may be in
/// very many of them.
inline constexpr qsizetype keySize = 4096;
/// Shared references let a few bytes stand for endless values. So the cost of a document is counted with
/// every reference followed: 1 for a scalar or a key, containerCost and its parts for a container, as what is
/// made of one (an item of a tree) takes the memory of many scalars.
inline constexpr quint64 containerCost = 16;
/// What a document may cost however few its bytes are: 10,000 containers.
inline constexpr quint64 smallCost = 10'000 * containerCost;
/// The most that a document of so many bytes may cost. \a ownCost is what it costs when each of its
/// containers is counted once and a reference to one is 1: without sharing no document is over the limit, and
/// sharing adds at most a container for 32 bytes.
constexpr quint64 mostCost(quint64 ownCost, qint64 bytes)
{
    return std::max(smallCost, ownCost + quint64(bytes) / 2);
}
/// Of the XML form, which repeats what is shared: how many bytes of repetition it may have, for each of its
/// other bytes and besides.
inline constexpr qint64 repetitionPerByte = 4;
inline constexpr qint64 repetitionBesides = qint64(8) * 1024 * 1024;
} // namespace Limits

/// What became of reading: a value, or the reason why there is none (English, for the log).
struct ReadResult
{
    std::optional<QVariant> value;
    QString error;
    explicit operator bool() const { return value.has_value(); }
};

/// What became of writing: the bytes, or the reason why there are none.
struct WriteResult
{
    std::optional<QByteArray> bytes;
    QString error;
    explicit operator bool() const { return bytes.has_value(); }
};

/// Reads either form; the first bytes tell which.
ReadResult read(const QByteArray &bytes);

/// Fails as a whole for a value that the form cannot hold (a type that is no property list, nesting over the
/// limit; in XML: null, UID, lone surrogates and control characters).
WriteResult write(const QVariant &value, Form form = Form::Binary);

/// The date so many seconds after 2001-01-01 00:00 UTC: a QDateTime when that is exact, else a Date.
QVariant dateValue(double seconds);
/// The seconds that dateValue() would take for this QDateTime (of any time zone) or Date; none for an invalid
/// QDateTime and any other type.
std::optional<double> dateSeconds(const QVariant &value);

/// The boolean value of a property-list scalar as the platform converts it: a number is true when it is not
/// zero; a string is true when it begins, after blanks, a sign and zeros, with one of Y y T t 1…9. Anything
/// else is none.
std::optional<bool> boolValue(const QVariant &value);

/// The integer value of a number (reals truncate and saturate) or of a string's leading digits; else none.
std::optional<qint64> integerValue(const QVariant &value);

} // namespace PropertyList

Q_DECLARE_METATYPE(PropertyList::UID)
Q_DECLARE_METATYPE(PropertyList::Date)
