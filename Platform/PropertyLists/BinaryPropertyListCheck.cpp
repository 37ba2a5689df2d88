// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListCheck.h"

#include "Platform/PropertyLists/BinaryPropertyListFormat.h"
#include "Platform/PropertyLists/DictionaryEntries.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <algorithm>
#include <limits>

using namespace BinaryPropertyListFormat;
using namespace Qt::Literals::StringLiterals;
namespace Limits = PropertyList::Limits;

namespace {

constexpr QLatin1StringView unended("an object does not end within the file");
constexpr quint16 notMet = 0;
constexpr quint16 scalarDone = 1;
/// A string that is in keys_.
constexpr quint16 isKey = std::numeric_limits<quint16>::max() - 1;
constexpr quint16 underWay = std::numeric_limits<quint16>::max();
static_assert(Limits::depth < isKey - 1);
static_assert(Limits::inputSize < std::numeric_limits<quint32>::max());
constexpr quint64 saturatedCost = std::numeric_limits<quint32>::max();
/// A container takes at least a byte, and another two where it is referred to and in the offset table.
static_assert(Limits::mostCost((Limits::containerCost + 1) * Limits::inputSize / 3 + Limits::inputSize,
                               Limits::inputSize) < saturatedCost);

bool isContainer(quint8 marker)
{
    return marker >> 4 == Type::array || marker >> 4 == Type::dictionary;
}

bool isString(quint8 marker)
{
    return marker >> 4 == Type::asciiString || marker >> 4 == Type::utf16String;
}

bool isASCII(const uchar *text, quint64 size)
{
    constexpr quint64 highBits = 0x8080808080808080;
    const uchar *const end = text + size;
    quint64 all = size == 0 ? 0 : loadBefore(end, std::min<quint64>(size, sizeof(quint64)));
    for (; text + sizeof(quint64) < end; text += sizeof(quint64))
        all |= qFromUnaligned<quint64>(text);
    return (all & highBits) == 0;
}

} // namespace

BinaryPropertyListReader::Check::Check(BinaryPropertyListReader &reader)
    : reader_(reader)
    , data_(reader.data_)
    , offsets_(reader.offsets_.data())
    , objects_(reader.offsets_.size())
    , objectsEnd_(reader.objectsEnd_)
    , referenceSize_(quint64(reader.referenceSize_))
    , bytesLeft_(quint64(reader.bytes_.size()))
    , progress_(objects_, notMet)
{
    reader_.notes_.resize(objects_);
}

bool BinaryPropertyListReader::Check::refuse(QLatin1StringView reason)
{
    return reader_.refuse(reason);
}

bool BinaryPropertyListReader::Check::refuseDepth()
{
    return reader_.refuse(QStringLiteral("more than %1 levels of nesting").arg(Limits::depth));
}

bool BinaryPropertyListReader::Check::run()
{
    const Object top = reader_.top_;
    if (!(isContainer(reader_.marker(top)) ? begin(top) && follow() : meetScalar(top)))
        return false;
    if (topCost_ > Limits::mostCost(ownCost_, reader_.bytes_.size()))
        return refuse("shared parts stand for too many values"_L1);
    reader_.payloads_.resize(payloads_);
    reader_.strings_.resize(strings_);
    for (auto key = keys_.cbegin(); key != keys_.cend(); ++key)
        reader_.strings_[*key] = key.key();
    return true;
}

/// From the container that has begun, all that its elements or values lead to.
bool BinaryPropertyListReader::Check::follow()
{
    while (!stack_.empty()) {
        Frame *frame = &stack_.back();
        while (frame->next != frame->end) {
            frame->next += referenceSize_;
            const quint64 child = loadBefore(frame->next, referenceSize_);
            if (child >= objects_)
                return refuse("a reference to no object"_L1);
            const Progress progress = progress_[child];
            if (progress == scalarDone || progress == isKey) {
                ++frame->cost;
            } else if (progress == underWay) {
                return refuse("an object contains itself"_L1);
            } else if (progress != notMet) {
                frame->add(progress, reader_.notes_[child]);
            } else if (isContainer(reader_.marker(Object(child)))) {
                // It comes first; what it is in goes on after it.
                if (!begin(Object(child)))
                    return false;
                frame = &stack_.back();
            } else {
                if (!meetScalar(Object(child)))
                    return false;
                ++frame->cost;
            }
        }
        const Frame &done = *frame;
        topCost_ = std::min(done.cost, saturatedCost);
        const Progress levels = done.levels + 1;
        reader_.notes_[done.object] = quint32(topCost_);
        progress_[done.object] = levels;
        stack_.pop_back();
        if (stack_.size() + levels - scalarDone > std::size_t(Limits::depth))
            return refuseDepth();
        if (!stack_.empty())
            stack_.back().add(levels, quint32(topCost_));
    }
    return true;
}

/// Of a dictionary all keys are met here.
inline bool BinaryPropertyListReader::Check::begin(Object container)
{
    const bool isDictionary = reader_.marker(container) >> 4 == Type::dictionary;
    const std::optional<Content> content =
        takeContent(container, isDictionary ? 2 * referenceSize_ : referenceSize_);
    if (!content)
        return false;
    if (stack_.size() == std::size_t(Limits::depth))
        return refuseDepth();
    progress_[container] = underWay;
    const quint64 keys = isDictionary ? content->count : 0;
    ownCost_ += Limits::containerCost + keys + content->count;
    const uchar *const first = data_ + content->start + keys * referenceSize_;
    stack_.push_back({.next = first,
                      .end = first + content->count * referenceSize_,
                      .cost = Limits::containerCost + keys,
                      .object = container,
                      .levels = scalarDone});
    return checkKeys(container, {content->start, keys});
}

/// The content of an object that was not met before, of elements of \a unit bytes; none, and refused, if not
/// all of it lies within the objects.
inline std::optional<BinaryPropertyListReader::Content>
BinaryPropertyListReader::Check::takeContent(Object object, quint64 unit)
{
    const quint64 offset = offsets_[object];
    const uchar *const at = data_ + offset;
    const quint64 room = objectsEnd_ - offset - 1;
    quint64 head = 1;
    quint64 count = *at & 0xf;
    switch (*at >> 4) {
    case Type::simple:
        count = 0;
        break;
    case Type::integer:
    case Type::real:
    case Type::date:
        count = quint64(1) << count;
        break;
    case Type::uid:
        ++count;
        break;
    default:
        if (count != countFollows)
            break;
        if (room < 1 || at[1] >> 4 != Type::integer || (at[1] & 0xf) > 3 ||
            room < 1 + (quint64(1) << (at[1] & 0xf))) {
            refuse(unended);
            return std::nullopt;
        }
        const quint64 size = quint64(1) << (at[1] & 0xf);
        head = 2 + size;
        count = loadBefore(at + head, size);
    }
    // The first, so that the product has room.
    const quint64 size = head + count * unit;
    if (count > objectsEnd_ || size > room + 1) {
        refuse(unended);
        return std::nullopt;
    }
    if (size > bytesLeft_) {
        refuse("objects overlap"_L1);
        return std::nullopt;
    }
    bytesLeft_ -= size;
    return Content{offset + head, count};
}

bool BinaryPropertyListReader::Check::meetScalar(Object object)
{
    const quint8 marker = reader_.marker(object);
    const std::optional<Content> content =
        takeContent(object, marker >> 4 == Type::utf16String ? sizeof(char16_t) : 1);
    if (!content)
        return false;
    progress_[object] = scalarDone;
    switch (marker >> 4) {
    case Type::simple:
        if (marker == nullMarker || marker == falseMarker || marker == trueMarker)
            return true;
        break;
    case Type::integer:
        if (content->count <= 8)
            return true;
        if (content->count == 16) {
            // Room for every qint64 and quint64, and no more.
            const quint64 high = load(data_ + content->start, 8);
            const bool lowIsNegative = data_[content->start + 8] & 0x80;
            if (high == 0 || (high == std::numeric_limits<quint64>::max() && lowIsNegative))
                return true;
        }
        return refuse("an integer of more than 64 bits"_L1);
    case Type::real:
        if (marker == floatMarker || marker == doubleMarker)
            return true;
        break;
    case Type::date:
        if (marker == dateMarker)
            return true;
        break;
    case Type::uid:
        if (content->count <= 8)
            return true;
        break;
    case Type::data:
        reader_.notes_[object] = payloads_++;
        return true;
    case Type::asciiString:
        if (!isASCII(data_ + content->start, content->count))
            return refuse("an ASCII string with other bytes"_L1);
        [[fallthrough]];
    case Type::utf16String:
        reader_.notes_[object] = strings_++;
        return true;
    default:
        break;
    }
    return reader_.refuse(
        QStringLiteral("an object of unknown type 0x%1").arg(marker, 2, 16, QLatin1Char('0')));
}

bool BinaryPropertyListReader::Check::checkKeys(Object dictionary, const Content &content)
{
    bool isRepeated = false;
    const uchar *at = data_ + content.start;
    for (const uchar *const end = at + content.count * referenceSize_; at != end;) {
        at += referenceSize_;
        const quint64 reference = loadBefore(at, referenceSize_);
        if (reference >= objects_)
            return refuse("a reference to no object"_L1);
        const Object key = Object(reference);
        if (progress_[key] != isKey && !meetKey(key))
            return false;
        quint32 &metIn = metIn_[reader_.notes_[key]];
        isRepeated |= metIn == dictionary + 1;
        metIn = dictionary + 1;
    }
    if (isRepeated)
        noteLastEntries(dictionary, content);
    return true;
}

/// Has a key that reads like another one be the same string.
bool BinaryPropertyListReader::Check::meetKey(Object key)
{
    if (!isString(data_[offsets_[key]]))
        return refuse("a dictionary key that is no string"_L1);
    if (progress_[key] == notMet && !meetScalar(key))
        return false;
    if (reader_.content(key).count > quint64(Limits::keySize))
        return reader_.refuse(
            QStringLiteral("a dictionary key of more than %1 characters").arg(Limits::keySize));
    progress_[key] = isKey;
    const QString text = reader_.decoded(key);
    const auto known = keys_.constFind(text);
    if (known != keys_.constEnd()) {
        reader_.notes_[key] = *known;
        return true;
    }
    keys_.insert(text, reader_.notes_[key]);
    metIn_.resize(strings_);
    return true;
}

/// Of a dictionary that repeats a key.
void BinaryPropertyListReader::Check::noteLastEntries(Object dictionary, const Content &content)
{
    std::vector<quint32> keys(content.count);
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = reader_.notes_[reader_.reference(content.start, i)];
    reader_.lastEntries_.insert(dictionary, DictionaryEntries::positionsOfLast(keys));
}
