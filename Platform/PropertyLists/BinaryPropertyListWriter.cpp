// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"

#include "Platform/PropertyLists/BinaryPropertyListFormat.h"
#include "Platform/PropertyLists/DictionaryEntries.h"

#include <QHashFunctions>
#include <algorithm>
#include <cstring>
#include <limits>

using namespace BinaryPropertyListFormat;
using PropertyList::WriteResult;

namespace {

constexpr std::size_t maximumSize = std::size_t(PropertyList::Limits::inputSize);
/// Marker, and a count of at most 8 bytes as an integer object.
constexpr std::size_t longestPrefix = 1 + 1 + 8;

constexpr auto tooLarge = "the property list would be larger than 256 MiB";

/// The least of 1, 2, 4 and 8 bytes that hold the number.
int leastSize(quint64 number)
{
    return number <= 0xff ? 1 : number <= 0xffff ? 2 : number <= 0xffffffff ? 4 : 8;
}

quint8 powerOfTwo(int size)
{
    return size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
}

quint8 *store(quint8 *to, quint64 number, int size)
{
    const quint64 bigEndian = qToBigEndian(number);
    std::memcpy(to, reinterpret_cast<const quint8 *>(&bigEndian) + (sizeof bigEndian - std::size_t(size)),
                std::size_t(size));
    return to + size;
}

quint8 *storeInteger(quint8 *to, quint64 number)
{
    const int size = leastSize(number);
    *to++ = marker(Type::integer, powerOfTwo(size));
    return store(to, number, size);
}

quint8 *storePrefix(quint8 *to, quint8 type, std::size_t count)
{
    if (count < countFollows) {
        *to++ = marker(type, quint8(count));
        return to;
    }
    *to++ = marker(type, countFollows);
    return storeInteger(to, count);
}

std::size_t prefixSize(std::size_t count)
{
    return count < countFollows ? 1 : std::size_t(2 + leastSize(count));
}

/// Where the same number of bytes is stored many times: the size as a constant.
template <int size>
quint8 *storeReferences(quint8 *to, const quint32 *from, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i, to += size) {
        if constexpr (size == 1)
            *to = quint8(from[i]);
        else if constexpr (size == 2)
            qToBigEndian(quint16(from[i]), to);
        else
            qToBigEndian(from[i], to);
    }
    return to;
}

quint8 *storeReferences(quint8 *to, const quint32 *from, std::size_t count, int size)
{
    switch (size) {
    case 1:
        return storeReferences<1>(to, from, count);
    case 2:
        return storeReferences<2>(to, from, count);
    default:
        return storeReferences<4>(to, from, count);
    }
}

} // namespace

BinaryPropertyListWriter::BinaryPropertyListWriter()
    : seed_(QHashSeed::globalSeed())
{
}

// Scalars are encoded at the end of bytes_ and taken away again if they are there already.
quint8 *BinaryPropertyListWriter::grow(std::size_t size)
{
    const std::size_t start = bytes_.size();
    makeRoom(bytes_, size);
    bytes_.resize(start + size);
    return bytes_.data() + start;
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::intern(std::size_t start)
{
    return intern(start, Kind::Scalar,
                  quint32(qHashBits(bytes_.data() + start, bytes_.size() - start, seed_)));
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::intern(std::size_t start, Kind kind, quint32 hash)
{
    const Object object{quint32(start), quint32(bytes_.size() - start), 1, 0, kind};
    const auto isSame = [&](Ref candidate) {
        const Object &other = objects_[candidate];
        return other.count == object.count &&
               std::memcmp(bytes_.data() + other.first, bytes_.data() + start, object.count) == 0;
    };
    if (const std::optional<Ref> known = scalars_.find(hash, isSame)) {
        bytes_.resize(start);
        return *known;
    }
    if (bytes_.size() > maximumSize) {
        bytes_.resize(start);
        return invalid(QString::fromLatin1(tooLarge));
    }
    makeRoom(objects_, 1);
    objects_.push_back(object);
    scalars_.add(hash, Ref(objects_.size() - 1));
    return Ref(objects_.size() - 1);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::invalid(const QString &reason)
{
    if (!invalid_) {
        invalid_ = Ref(objects_.size());
        invalidReason_ = reason;
        makeRoom(objects_, 1);
        objects_.push_back({0, 0, 1, 0, Kind::Invalid});
    }
    return *invalid_;
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::null()
{
    const std::size_t start = bytes_.size();
    *grow(1) = nullMarker;
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::boolean(bool value)
{
    const std::size_t start = bytes_.size();
    *grow(1) = value ? trueMarker : falseMarker;
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::integer(qint64 value)
{
    // One, two and four bytes are unsigned, eight signed: a negative number always takes eight.
    const std::size_t start = bytes_.size();
    quint8 *const to = grow(longestPrefix);
    const quint8 *const end = storeInteger(to, quint64(value));
    bytes_.resize(start + std::size_t(end - to));
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::unsignedInteger(quint64 value)
{
    if (value <= quint64(std::numeric_limits<qint64>::max()))
        return integer(qint64(value));
    const std::size_t start = bytes_.size();
    quint8 *to = grow(1 + 16);
    *to++ = marker(Type::integer, 4);
    store(store(to, 0, 8), value, 8);
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::real(double value)
{
    const std::size_t start = bytes_.size();
    quint8 *const to = grow(1 + 8);
    *to = doubleMarker;
    store(to + 1, std::bit_cast<quint64>(value), 8);
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::date(const QDateTime &value)
{
    const std::optional<double> seconds = PropertyList::dateSeconds(value);
    return seconds ? date(PropertyList::Date{*seconds}) : invalid(QStringLiteral("an invalid date"));
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::date(PropertyList::Date value)
{
    const std::size_t start = bytes_.size();
    quint8 *const to = grow(1 + 8);
    *to = dateMarker;
    store(to + 1, std::bit_cast<quint64>(value.seconds), 8);
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::data(QByteArrayView value)
{
    const std::size_t size = std::size_t(value.size());
    if (size > maximumSize)
        return invalid(QString::fromLatin1(tooLarge));
    const std::size_t start = bytes_.size();
    quint8 *const to = storePrefix(grow(prefixSize(size) + size), Type::data, size);
    if (size > 0)
        std::memcpy(to, value.data(), size);
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::data(const QByteArray &value)
{
    const void *const identity = KnownParts::identity(value);
    if (const std::optional<Ref> known = known_.find(identity))
        return *known;
    const Ref added = data(QByteArrayView(value));
    known_.add(identity, value, added);
    return added;
}

BinaryPropertyListWriter::ComingString BinaryPropertyListWriter::comingLong(const QString &value) const
{
    const void *const identity = KnownParts::identity(value);
    if (known_.find(identity))
        return {value, 0, &value};
    ComingString result = coming(QStringView(value));
    if (identity)
        result.owner = &value;
    return result;
}

BinaryPropertyListWriter::ComingString BinaryPropertyListWriter::coming(QStringView value) const
{
    const quint32 hash =
        quint32(qHashBits(value.utf16(), std::size_t(value.size()) * sizeof(char16_t), seed_));
    scalars_.prefetch(hash);
    return {value, hash};
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::string(QStringView value)
{
    return string(coming(value));
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::string(const QString &value)
{
    return string(coming(value));
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::longString(const ComingString &value)
{
    const void *const identity = KnownParts::identity(*value.owner);
    if (const std::optional<Ref> known = known_.find(identity))
        return *known;
    const Ref added = string({value.text, value.hash});
    known_.add(identity, *value.owner, added);
    return added;
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::string(const ComingString &value)
{
    if (value.owner)
        return longString(value);
    const std::size_t size = std::size_t(value.text.size());
    if (size > maximumSize)
        return invalid(QString::fromLatin1(tooLarge));
    const std::size_t start = bytes_.size();
    const char16_t *const from = value.text.utf16();
    quint8 *to = storePrefix(grow(prefixSize(size) + size), Type::asciiString, size);
    char16_t all = 0;
    for (std::size_t i = 0; i < size; ++i) {
        all |= from[i];
        to[i] = quint8(from[i]);
    }
    if (all > 0x7f) {
        bytes_.resize(start);
        to = storePrefix(grow(prefixSize(size) + 2 * size), Type::utf16String, size);
        qToBigEndian<quint16>(from, qsizetype(size), to);
    }
    return intern(start, Kind::String, value.hash);
}

void BinaryPropertyListWriter::encodeUID(quint64 value)
{
    const int size = leastSize(value);
    quint8 *const to = grow(1 + std::size_t(size));
    *to = marker(Type::uid, quint8(size - 1));
    store(to + 1, value, size);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::uid(quint64 value)
{
    const std::size_t start = bytes_.size();
    encodeUID(value);
    return intern(start);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::unsharedUID(quint64 value)
{
    const std::size_t start = bytes_.size();
    encodeUID(value);
    if (bytes_.size() > maximumSize) {
        bytes_.resize(start);
        return invalid(QString::fromLatin1(tooLarge));
    }
    makeRoom(objects_, 1);
    objects_.push_back({quint32(start), quint32(bytes_.size() - start), 1, 0, Kind::UnsharedScalar});
    return Ref(objects_.size() - 1);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::container(Kind kind, std::span<const Ref> keys,
                                                                  std::span<const Ref> values)
{
    // Every reference takes at least one byte of the document.
    if (references_.size() + keys.size() + values.size() > maximumSize || objects_.size() > maximumSize)
        return invalid(QString::fromLatin1(tooLarge));
    Object object{quint32(references_.size()), quint32(values.size()), 0, 0, kind};
    quint64 cost = PropertyList::Limits::containerCost + keys.size();
    for (const Ref value : values) {
        cost += objects_[value].cost;
        object.depth = std::max(object.depth, objects_[value].depth);
    }
    object.cost = quint32(std::min<quint64>(cost, std::numeric_limits<quint32>::max()));
    object.depth = quint16(std::min<int>(object.depth + 1, std::numeric_limits<quint16>::max()));
    makeRoom(references_, keys.size() + values.size());
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    makeRoom(objects_, 1);
    objects_.push_back(object);
    return Ref(objects_.size() - 1);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::array(std::span<const Ref> elements)
{
    return container(Kind::Array, {}, elements);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::dictionary(std::span<const Ref> keys,
                                                                   std::span<const Ref> values)
{
    if (keys.size() != values.size())
        return invalid(QStringLiteral("a dictionary whose keys and values differ in number"));
    for (const Ref key : keys) {
        if (objects_[key].kind != Kind::String)
            return invalid(QStringLiteral("a dictionary key that is no string"));
        if (objects_[key].count > PropertyList::Limits::keySize &&
            length(key) > std::size_t(PropertyList::Limits::keySize))
            return invalid(QStringLiteral("a dictionary key of more than %1 characters")
                               .arg(PropertyList::Limits::keySize));
    }
    if (!DictionaryEntries::hasRepeatedKey(keys))
        return container(Kind::Dictionary, keys, values);
    const DictionaryEntries entries = DictionaryEntries::withLastOfEachKey(keys, values);
    return container(Kind::Dictionary, entries.keys, entries.values);
}

std::size_t BinaryPropertyListWriter::length(Ref string) const
{
    const Object &object = objects_[string];
    const quint8 *const encoded = bytes_.data() + object.first;
    if ((encoded[0] & 0xf) != countFollows)
        return encoded[0] & 0xf;
    return std::size_t(load(encoded + 2, 1 << (encoded[1] & 0xf)));
}

BinaryPropertyListWriter::Mark BinaryPropertyListWriter::mark() const
{
    return {objects_.size(), references_.size(), bytes_.size()};
}

void BinaryPropertyListWriter::rewind(const Mark &mark)
{
    scalars_.forgetFrom(Ref(mark.objects));
    known_.forgetFrom(Ref(mark.objects));
    objects_.resize(mark.objects);
    references_.resize(mark.references);
    bytes_.resize(mark.bytes);
    if (invalid_ && *invalid_ >= mark.objects)
        invalid_.reset();
}

WriteResult BinaryPropertyListWriter::finish(Ref top) const
{
    if (invalid_)
        return {std::nullopt, invalidReason_};
    if (objects_[top].depth > PropertyList::Limits::depth)
        return {std::nullopt,
                QStringLiteral("more than %1 levels of nesting").arg(PropertyList::Limits::depth)};

    // Some readers want the number of objects itself to fit a reference, and the table's place an offset.
    const int referenceSize = leastSize(objects_.size());
    std::size_t offsetTable = header.size() + bytes_.size() + references_.size() * std::size_t(referenceSize);
    quint64 ownCost = references_.size();
    for (const Object &object : objects_) {
        if (object.kind == Kind::Array || object.kind == Kind::Dictionary) {
            offsetTable += prefixSize(object.count);
            ownCost += PropertyList::Limits::containerCost;
        }
    }
    const int offsetSize = leastSize(offsetTable);
    const std::size_t size = offsetTable + objects_.size() * std::size_t(offsetSize) + trailerSize;
    if (size > maximumSize)
        return {std::nullopt, QString::fromLatin1(tooLarge)};
    if (objects_[top].cost > PropertyList::Limits::mostCost(ownCost, qint64(size)))
        return {std::nullopt, QStringLiteral("shared parts stand for too many values")};

    QByteArray result(qsizetype(size), Qt::Uninitialized);
    adviseLargePages(result.data(), size);
    quint8 *const begin = reinterpret_cast<quint8 *>(result.data());
    // All scalars come first, as they are; then the containers.
    std::memcpy(begin, header.data(), header.size());
    if (!bytes_.empty())
        std::memcpy(begin + header.size(), bytes_.data(), bytes_.size());
    quint8 *to = begin + header.size() + bytes_.size();
    quint8 *offset = begin + offsetTable;
    for (const Object &object : objects_) {
        quint32 place = quint32(to - begin);
        if (object.kind == Kind::Array || object.kind == Kind::Dictionary) {
            const bool isArray = object.kind == Kind::Array;
            to = storePrefix(to, isArray ? Type::array : Type::dictionary, object.count);
            const std::size_t references = isArray ? object.count : 2 * std::size_t(object.count);
            to = storeReferences(to, references_.data() + object.first, references, referenceSize);
        } else {
            place = quint32(header.size() + object.first);
        }
        offset = storeReferences(offset, &place, 1, offsetSize);
    }
    std::memset(offset, 0, trailerSize);
    offset[trailerOffsetSize] = quint8(offsetSize);
    offset[trailerReferenceSize] = quint8(referenceSize);
    store(offset + trailerObjectCount, objects_.size(), 8);
    store(offset + trailerTopObject, top, 8);
    store(offset + trailerOffsetTable, offsetTable, 8);
    return {std::move(result), {}};
}
