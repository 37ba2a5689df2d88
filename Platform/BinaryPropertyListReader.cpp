// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/BinaryPropertyListReader.h"

#include "Platform/BinaryPropertyListFormat.h"
#include "Platform/DictionaryEntries.h"
#include "Platform/PropertyList.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

using namespace BinaryPropertyListFormat;
namespace Limits = PropertyList::Limits;

namespace {

/// What the check knows of an object: not met yet, being followed, or its levels of containers plus 1.
using Progress = quint16;
constexpr Progress notMet = 0;
constexpr Progress scalarDone = 1;
constexpr Progress underWay = std::numeric_limits<Progress>::max();
static_assert(Limits::depth < underWay - 1);
static_assert(Limits::inputSize < std::numeric_limits<quint32>::max());
constexpr quint64 saturatedCost = std::numeric_limits<quint32>::max();
/// A container takes at least a byte, and another two where it is referred to and in the offset table.
static_assert(Limits::mostCost((Limits::containerCost + 1) * Limits::inputSize / 3 + Limits::inputSize,
                               Limits::inputSize) < saturatedCost);

struct Frame
{
    quint64 start = 0;
    quint64 cost = Limits::containerCost;
    quint32 object = 0;
    quint32 next = 0;
    /// Of a dictionary, the references before this one are keys; 0 for an array.
    quint32 keys = 0;
    quint32 references = 0;
    Progress levels = scalarDone;
};

bool isASCII(const uchar *text, quint64 size)
{
    constexpr quint64 highBits = 0x8080808080808080;
    quint64 all = 0;
    for (; size >= sizeof(quint64); size -= sizeof(quint64), text += sizeof(quint64)) {
        quint64 word;
        std::memcpy(&word, text, sizeof word);
        all |= word;
    }
    for (; size > 0; --size, ++text)
        all |= *text;
    return (all & highBits) == 0;
}

bool isContainer(quint8 marker)
{
    return marker >> 4 == Type::array || marker >> 4 == Type::dictionary;
}

bool isString(quint8 marker)
{
    return marker >> 4 == Type::asciiString || marker >> 4 == Type::utf16String;
}

} // namespace

bool BinaryPropertyListReader::recognises(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArrayView(header.data(), header.size()));
}

PropertyListDocument::Ptr BinaryPropertyListReader::parse(const QByteArray &bytes, QString *error)
{
    std::unique_ptr<BinaryPropertyListReader> reader(new BinaryPropertyListReader(bytes));
    if (!reader->readTrailer() || !reader->checkObjects()) {
        *error = reader->error_;
        return nullptr;
    }
    const Handle top = reader->top_;
    return std::make_shared<const PropertyListDocument>(std::move(reader), top);
}

BinaryPropertyListReader::BinaryPropertyListReader(const QByteArray &bytes)
    : bytes_(bytes)
    , data_(reinterpret_cast<const uchar *>(bytes_.constData()))
{
}

bool BinaryPropertyListReader::refuse(const QString &reason)
{
    error_ = QStringLiteral("binary property list: ") + reason;
    return false;
}

bool BinaryPropertyListReader::readTrailer()
{
    if (bytes_.size() > Limits::inputSize)
        return refuse(QStringLiteral("larger than %1 bytes").arg(Limits::inputSize));
    if (!recognises(bytes_) || bytes_.size() < qsizetype(header.size()) + trailerSize)
        return refuse(QStringLiteral("no header or no trailer"));
    const quint64 trailer = quint64(bytes_.size() - trailerSize);
    const uchar *const fields = data_ + trailer;
    const int offsetSize = fields[trailerOffsetSize];
    referenceSize_ = fields[trailerReferenceSize];
    const quint64 objects = load(fields + trailerObjectCount, 8);
    const quint64 top = load(fields + trailerTopObject, 8);
    const quint64 table = load(fields + trailerOffsetTable, 8);
    if (offsetSize < 1 || offsetSize > 8 || referenceSize_ < 1 || referenceSize_ > 8)
        return refuse(QStringLiteral("offsets or references of an impossible size"));
    if (table < header.size() || table > trailer || objects > (trailer - table) / quint64(offsetSize))
        return refuse(QStringLiteral("the offset table is not within the file"));
    if (top >= objects)
        return refuse(QStringLiteral("no top object"));
    if (objects > table - header.size() || (offsetSize < 8 && objects > quint64(1) << 8 * offsetSize))
        return refuse(QStringLiteral("more objects than the file has room for"));

    objectsEnd_ = table;
    top_ = Object(top);
    offsets_.reserve(objects);
    for (const uchar *at = data_ + table; offsets_.size() < objects; at += offsetSize) {
        const quint64 offset = load(at, offsetSize);
        if (offset < header.size() || offset >= objectsEnd_)
            return refuse(QStringLiteral("an object outside the file"));
        offsets_.push_back(quint32(offset));
    }
    return true;
}

BinaryPropertyListReader::Content BinaryPropertyListReader::content(Object object) const
{
    const quint64 offset = offsets_[object];
    const quint8 low = data_[offset] & 0xf;
    if (low != countFollows)
        return {offset + 1, low};
    const int size = 1 << (data_[offset + 1] & 0xf);
    return {offset + 2 + quint64(size), load(data_ + offset + 2, size)};
}

std::optional<BinaryPropertyListReader::Content> BinaryPropertyListReader::checkedContent(Object object) const
{
    const quint64 offset = offsets_[object];
    const quint8 type = data_[offset] >> 4;
    const quint8 low = data_[offset] & 0xf;
    const quint64 room = objectsEnd_ - offset - 1;
    Content content{offset + 1, low};
    quint64 unit = 1;
    switch (type) {
    case Type::simple:
        content.count = 0;
        break;
    case Type::integer:
    case Type::real:
    case Type::date:
        content.count = quint64(1) << low;
        break;
    case Type::uid:
        content.count = low + 1U;
        break;
    default:
        if (low == countFollows) {
            if (room < 1 || data_[offset + 1] >> 4 != Type::integer || (data_[offset + 1] & 0xf) > 3)
                return std::nullopt;
            if (room < 1 + (quint64(1) << (data_[offset + 1] & 0xf)))
                return std::nullopt;
            content = this->content(object);
        }
        if (type == Type::utf16String)
            unit = sizeof(char16_t);
        else if (type == Type::array)
            unit = quint64(referenceSize_);
        else if (type == Type::dictionary)
            unit = 2 * quint64(referenceSize_);
    }
    if (content.count > (objectsEnd_ - content.start) / unit)
        return std::nullopt;
    return content;
}

bool BinaryPropertyListReader::checkScalar(Object object, const Content &content)
{
    const quint8 marker = this->marker(object);
    switch (marker >> 4) {
    case Type::simple:
        if (marker == nullMarker || marker == falseMarker || marker == trueMarker)
            return true;
        break;
    case Type::integer:
        if (content.count <= 8)
            return true;
        if (content.count == 16) {
            // Room for every qint64 and quint64, and no more.
            const quint64 high = load(data_ + content.start, 8);
            const bool lowIsNegative = data_[content.start + 8] & 0x80;
            if (high == 0 || (high == std::numeric_limits<quint64>::max() && lowIsNegative))
                return true;
        }
        return refuse(QStringLiteral("an integer of more than 64 bits"));
    case Type::real:
        if (marker == floatMarker || marker == doubleMarker)
            return true;
        break;
    case Type::date:
        if (marker == dateMarker)
            return true;
        break;
    case Type::uid:
        if (content.count <= 8)
            return true;
        break;
    case Type::data:
        notes_[object] = quint32(payloads_.size());
        payloads_.emplace_back();
        return true;
    case Type::asciiString:
        if (!isASCII(data_ + content.start, content.count))
            return refuse(QStringLiteral("an ASCII string with other bytes"));
        [[fallthrough]];
    case Type::utf16String:
        notes_[object] = quint32(strings_.size());
        strings_.emplace_back();
        return true;
    default:
        break;
    }
    return refuse(QStringLiteral("an object of unknown type 0x%1").arg(marker, 2, 16, QLatin1Char('0')));
}

/// Has a key that reads like another one be the same string.
bool BinaryPropertyListReader::shareKey(Object key)
{
    if (content(key).count > quint64(Limits::keySize))
        return refuse(QStringLiteral("a dictionary key of more than %1 characters").arg(Limits::keySize));
    const auto known = keys_.constFind(string(key));
    if (known != keys_.constEnd()) {
        notes_[key] = *known;
        return true;
    }
    keys_.insert(string(key), notes_[key]);
    metIn_.resize(strings_.size());
    return true;
}

/// Of every dictionary all keys, in their order.
bool BinaryPropertyListReader::checkKey(Object dictionary, Object key)
{
    if (!isString(marker(key)))
        return refuse(QStringLiteral("a dictionary key that is no string"));
    const bool isKnown = notes_[key] < metIn_.size() && metIn_[notes_[key]] != 0;
    if (!isKnown && !shareKey(key))
        return false;
    quint32 &metIn = metIn_[notes_[key]];
    hasRepeatedKey_ = hasRepeatedKey_ || metIn == dictionary + 1;
    metIn = dictionary + 1;
    return true;
}

/// Of a dictionary that repeats a key.
void BinaryPropertyListReader::noteLastEntries(Object dictionary)
{
    const Content content = this->content(dictionary);
    std::vector<quint32> keys(content.count);
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = notes_[reference(content.start, i)];
    lastEntries_.insert(dictionary, DictionaryEntries::positionsOfLast(keys));
}

// Follows every reference from the top object, each object once, and notes for each container how many levels
// are below it and what it costs.
bool BinaryPropertyListReader::checkObjects()
{
    quint64 ownCost = 0;
    // Objects that overlap could have more content together than the file has bytes, and cost time and
    // memory out of proportion.
    quint64 bytesLeft = quint64(bytes_.size());
    std::vector<Progress> progress(offsets_.size(), notMet);
    notes_.resize(offsets_.size());
    std::vector<Frame> stack;

    const auto meet = [&](Object object) {
        const std::optional<Content> content = checkedContent(object);
        if (!content)
            return refuse(QStringLiteral("an object does not end within the file"));
        const quint8 marker = this->marker(object);
        const bool isDictionary = marker >> 4 == Type::dictionary;
        const quint64 unit = isContainer(marker) ? quint64(referenceSize_) * (isDictionary ? 2 : 1)
                                                 : (marker >> 4 == Type::utf16String ? 2 : 1);
        const quint64 size = content->start - offsets_[object] + content->count * unit;
        if (size > bytesLeft)
            return refuse(QStringLiteral("objects overlap"));
        bytesLeft -= size;
        if (!isContainer(marker)) {
            progress[object] = scalarDone;
            return checkScalar(object, *content);
        }
        if (stack.size() == std::size_t(Limits::depth))
            return refuse(QStringLiteral("more than %1 levels of nesting").arg(Limits::depth));
        progress[object] = underWay;
        const quint32 entries = quint32(content->count);
        ownCost += Limits::containerCost + (isDictionary ? 2 : 1) * content->count;
        stack.push_back({content->start, Limits::containerCost, object, 0, isDictionary ? entries : 0,
                         isDictionary ? 2 * entries : entries, scalarDone});
        return true;
    };

    if (!meet(top_))
        return false;
    while (!stack.empty()) {
        // Scalars and what is known already are dealt with here; a new container goes on the stack first.
        bool descended = false;
        const std::size_t current = stack.size() - 1;
        for (Frame *frame = &stack.back(); frame->next < frame->references; ++frame->next) {
            const Object child = reference(frame->start, frame->next);
            if (child >= offsets_.size())
                return refuse(QStringLiteral("a reference to no object"));
            if (progress[child] == notMet) {
                if (!meet(child))
                    return false;
                if (stack.size() - 1 != current) {
                    descended = true;
                    break;
                }
            } else if (progress[child] == underWay) {
                return refuse(QStringLiteral("an object contains itself"));
            }
            if (frame->next < frame->keys) {
                if (!checkKey(frame->object, child))
                    return false;
                if (frame->next + 1 == frame->keys && std::exchange(hasRepeatedKey_, false))
                    noteLastEntries(frame->object);
            }
            frame->cost += progress[child] == scalarDone ? 1 : notes_[child];
            frame->levels = std::max(frame->levels, progress[child]);
        }
        if (descended)
            continue;
        const Frame done = stack.back();
        stack.pop_back();
        notes_[done.object] = quint32(std::min(done.cost, saturatedCost));
        progress[done.object] = Progress(done.levels + 1);
        if (stack.size() + done.levels > std::size_t(Limits::depth))
            return refuse(QStringLiteral("more than %1 levels of nesting").arg(Limits::depth));
    }
    if (isContainer(marker(top_)) && notes_[top_] > Limits::mostCost(ownCost, bytes_.size()))
        return refuse(QStringLiteral("shared parts stand for too many values"));
    keys_.clear();
    metIn_.clear();
    return true;
}

BinaryPropertyListReader::Object BinaryPropertyListReader::reference(quint64 start, quint64 index) const
{
    const quint64 number = load(data_ + start + index * quint64(referenceSize_), referenceSize_);
    return Object(std::min<quint64>(number, std::numeric_limits<Object>::max()));
}

PropertyListType BinaryPropertyListReader::type(Handle node) const
{
    const quint8 marker = this->marker(Object(node));
    switch (marker >> 4) {
    case Type::simple:
        return marker == nullMarker ? PropertyListType::Null : PropertyListType::Boolean;
    case Type::integer:
        return PropertyListType::Integer;
    case Type::real:
        return PropertyListType::Real;
    case Type::date:
        return PropertyListType::Date;
    case Type::data:
        return PropertyListType::Data;
    case Type::uid:
        return PropertyListType::UID;
    case Type::array:
        return PropertyListType::Array;
    case Type::dictionary:
        return PropertyListType::Dictionary;
    default:
        return PropertyListType::String;
    }
}

QVariant BinaryPropertyListReader::scalar(Handle node) const
{
    const Object object = Object(node);
    const quint8 marker = this->marker(object);
    const uchar *const start = data_ + offsets_[object] + 1;
    switch (marker >> 4) {
    case Type::simple:
        return marker == nullMarker ? QVariant() : QVariant(marker == trueMarker);
    case Type::integer: {
        const int size = 1 << (marker & 0xf);
        const quint64 number = load(size == 16 ? start + 8 : start, std::min(size, 8));
        const bool isUnsigned =
            size == 16 && start[0] == 0 && number > quint64(std::numeric_limits<qint64>::max());
        return isUnsigned ? QVariant(qulonglong(number)) : QVariant(qlonglong(number));
    }
    case Type::real:
        if (marker == floatMarker)
            return double(std::bit_cast<float>(qFromBigEndian<quint32>(start)));
        return std::bit_cast<double>(qFromBigEndian<quint64>(start));
    case Type::date:
        return PropertyList::dateValue(std::bit_cast<double>(qFromBigEndian<quint64>(start)));
    case Type::data: {
        QByteArray &payload = payloads_[notes_[object]];
        if (payload.isNull()) {
            const Content content = this->content(object);
            payload = QByteArray(bytes_.constData() + content.start, qsizetype(content.count));
        }
        return payload;
    }
    case Type::uid:
        return QVariant::fromValue(PropertyList::UID{load(start, (marker & 0xf) + 1)});
    default:
        return string(node);
    }
}

const QString &BinaryPropertyListReader::string(Handle node) const
{
    const Object object = Object(node);
    QString &text = strings_[notes_[object]];
    if (!text.isNull())
        return text;
    const Content content = this->content(object);
    const uchar *const from = data_ + content.start;
    if (marker(object) >> 4 == Type::asciiString) {
        text = QString::fromLatin1(reinterpret_cast<const char *>(from), qsizetype(content.count));
    } else {
        text = QString(qsizetype(content.count), Qt::Uninitialized);
        qFromBigEndian<quint16>(from, qsizetype(content.count), text.data());
    }
    return text;
}

bool BinaryPropertyListReader::boolean(Handle node) const
{
    return marker(Object(node)) == trueMarker;
}

quint64 BinaryPropertyListReader::uid(Handle node) const
{
    const uchar *const start = data_ + offsets_[Object(node)];
    return load(start + 1, (*start & 0xf) + 1);
}

qsizetype BinaryPropertyListReader::count(Handle node) const
{
    if (!lastEntries_.isEmpty()) {
        const auto entries = lastEntries_.constFind(Object(node));
        if (entries != lastEntries_.constEnd())
            return qsizetype(entries->size());
    }
    return qsizetype(content(Object(node)).count);
}

quint64 BinaryPropertyListReader::entry(Object dictionary, qsizetype index) const
{
    if (!lastEntries_.isEmpty()) {
        const auto entries = lastEntries_.constFind(dictionary);
        if (entries != lastEntries_.constEnd())
            return (*entries)[std::size_t(index)];
    }
    return quint64(index);
}

PropertyListSource::Handle BinaryPropertyListReader::element(Handle array, qsizetype index) const
{
    return reference(content(Object(array)).start, quint64(index));
}

std::size_t BinaryPropertyListReader::uids(Handle array, qsizetype index, std::span<quint64> values) const
{
    const Content content = this->content(Object(array));
    const std::size_t most = std::min(values.size(), std::size_t(content.count) - std::size_t(index));
    for (std::size_t i = 0; i < most; ++i) {
        const Object element = reference(content.start, quint64(index) + i);
        if (marker(element) >> 4 != Type::uid)
            return i;
        values[i] = uid(element);
    }
    return most;
}

PropertyListSource::Handle BinaryPropertyListReader::key(Handle dictionary, qsizetype index) const
{
    return reference(content(Object(dictionary)).start, entry(Object(dictionary), index));
}

PropertyListSource::Handle BinaryPropertyListReader::valueAt(Handle dictionary, qsizetype index) const
{
    const Content content = this->content(Object(dictionary));
    return reference(content.start, content.count + entry(Object(dictionary), index));
}
