// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedArchiveReader.h"

#include "Platform/PropertyLists/DictionaryEntries.h"
#include "Platform/PropertyLists/KeyedArchiveFormat.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <algorithm>

using namespace KeyedArchiveFormat;

KeyedArchiveReader::KeyedArchiveReader(PropertyListDocument::Ptr archive, qsizetype size)
    : source_(std::make_unique<KeyedArchiveSource>(std::move(archive)))
    , properties_(source_->properties_)
    , size_(size)
{
}

PropertyListDocument::Ptr KeyedArchiveReader::read(QString *error)
{
    Handle property = 0;
    if (readHeader(&property)) {
        addObject(0); // null; done, as nothing is to be read of it
        progress_[0].state = State::Done;
        const std::optional<Slot> root = slotFor(property);
        if (root && readGraph(*root))
            return std::make_shared<const PropertyListDocument>(std::move(source_), *root);
    }
    if (error)
        *error = error_;
    return {};
}

bool KeyedArchiveReader::readHeader(Handle *root)
{
    const PropertyListNode top = source_->archive_->root();
    if (!top.isDictionary())
        return fail(QStringLiteral("no keyed archive: not a dictionary"));
    const PropertyListNode objects = top.value(objectsKey);
    if (!objects.isArray() || objects.count() == 0)
        return fail(QStringLiteral("no keyed archive: no \"$objects\""));
    const PropertyListNode archiver = top.value(archiverKey);
    // Subclasses of the archiver write their own name.
    if (!archiver.isNull() && !archiver.isString())
        return fail(QStringLiteral("no keyed archive: \"$archiver\" is no string"));
    const PropertyListNode archiveVersion = top.value(versionKey);
    if (!archiveVersion.isNull() && (archiveVersion.type() != PropertyListType::Integer ||
                                     archiveVersion.toVariant().toLongLong() != version))
        return fail(QStringLiteral("a keyed archive of another version"));

    const PropertyListNode tops = top.value(topKey);
    if (!tops.isDictionary())
        return fail(QStringLiteral("no keyed archive: no \"$top\""));
    std::optional<Handle> found;
    for (qsizetype i = 0; i < tops.count(); ++i) {
        if (tops.count() == 1 || tops.keyAt(i) == rootKey)
            found = tops.valueAt(i).handle();
    }
    if (!found)
        return fail(QStringLiteral("a keyed archive without a root object"));
    *root = *found;
    archivedObjects_ = objects.handle();
    slotOfUID_.resize(std::size_t(objects.count()));
    return true;
}

bool KeyedArchiveReader::readGraph(Slot root)
{
    if (!enter(root))
        return false;
    while (!visits_.empty()) {
        Visit &visit = visits_.back();
        const Object &object = source_->objects_[visit.slot];
        const bool isDictionary = object.type == PropertyListType::Dictionary;
        const quint32 parts = object.count * (isDictionary ? 2 : 1);
        Slot blocked = 0;
        for (; visit.next < parts; ++visit.next) {
            const std::size_t at = visit.next < object.count ? object.first + visit.next
                                                             : object.firstValue + visit.next - object.count;
            const Slot part = source_->references_[at];
            const Progress &progress = progress_[part];
            if (progress.state != State::Done) {
                blocked = part;
                break;
            }
            visit.cost += progress.cost;
            visit.height = std::max(visit.height, progress.height);
        }
        if (blocked) {
            if (!enter(blocked))
                return false;
        } else {
            const Visit done = visit;
            visits_.pop_back();
            if (!leave(done))
                return false;
        }
    }
    const quint64 ownCost = containersCost_ + source_->references_.size();
    if (progress_[root].cost > PropertyList::Limits::mostCost(ownCost, size_))
        return fail(QStringLiteral("shared parts stand for too many values"));
    return true;
}

bool KeyedArchiveReader::enter(Slot slot)
{
    if (progress_[slot].state == State::Done)
        return true;
    if (progress_[slot].state == State::Open)
        return fail(QStringLiteral("an object contains itself"));
    if (!readObject(slot))
        return false;
    const Object &object = source_->objects_[slot];
    if (object.type != PropertyListType::Array && object.type != PropertyListType::Dictionary) {
        progress_[slot].state = State::Done;
        return true;
    }
    if (visits_.size() >= std::size_t(PropertyList::Limits::depth))
        return fail(QStringLiteral("nested deeper than the limit"));
    // Containers may share one long list: each would have all of it walked, or even copied.
    parts_ += quint64(object.count) * (object.type == PropertyListType::Dictionary ? 2 : 1);
    if (parts_ > PropertyList::Limits::smallCost + 2 * quint64(size_))
        return fail(QStringLiteral("shared parts stand for too many values"));
    progress_[slot].state = State::Open;
    visits_.push_back({slot, 0, PropertyList::Limits::containerCost, 0});
    containersCost_ += PropertyList::Limits::containerCost;
    return true;
}

bool KeyedArchiveReader::leave(const Visit &visit)
{
    if (source_->objects_[visit.slot].type == PropertyListType::Dictionary && !checkKeys(visit.slot))
        return false;
    Progress &progress = progress_[visit.slot];
    progress.cost = quint32(std::min<quint64>(visit.cost, std::numeric_limits<quint32>::max()));
    progress.height = quint16(visit.height + 1);
    progress.state = State::Done;
    if (progress.height > PropertyList::Limits::depth)
        return fail(QStringLiteral("nested deeper than the limit"));
    return true;
}

quint32 KeyedArchiveReader::numberOfKey(Slot string)
{
    quint32 &number = progress_[string].key;
    if (number == 0) {
        number = keys_.value(source_->string(string), quint32(keys_.size() + 1));
        keys_.insert(source_->string(string), number);
    }
    return number;
}

/// Gives a dictionary that repeats a key a list of the entries that count. Lists may be shared: the old one
/// stays as it is.
bool KeyedArchiveReader::checkKeys(Slot dictionary)
{
    Object &object = source_->objects_[dictionary];
    std::vector<quint32> &references = source_->references_;
    keysOfOne_.clear();
    for (quint32 i = 0; i < object.count; ++i) {
        const Slot key = references[object.first + i];
        if (source_->objects_[key].type != PropertyListType::String)
            return fail(QStringLiteral("a dictionary key is no string"));
        if (source_->string(key).size() > PropertyList::Limits::keySize)
            return fail(QStringLiteral("a dictionary key of more than %1 characters")
                            .arg(PropertyList::Limits::keySize));
        keysOfOne_.push_back(numberOfKey(key));
    }
    if (!DictionaryEntries::hasRepeatedKey(keysOfOne_))
        return true;
    const std::vector<quint32> last = DictionaryEntries::positionsOfLast(keysOfOne_);
    const quint32 first = quint32(references.size());
    for (const quint32 position : last)
        references.push_back(references[object.first + position]);
    const quint32 firstValue = quint32(references.size());
    for (const quint32 position : last)
        references.push_back(references[object.firstValue + position]);
    setContainer(dictionary, PropertyListType::Dictionary, first, firstValue, quint32(last.size()));
    return true;
}

/// References of shorter arrays are copied for each object that refers to them: at most this many for the
/// dozen bytes that such an object takes.
static constexpr quint32 longArray = 16;

bool KeyedArchiveReader::readReferences(Handle array, quint32 *first, quint32 *count)
{
    const qsizetype size = properties_.count(array);
    std::vector<quint32> &references = source_->references_;
    if (quint64(size) + references.size() > std::numeric_limits<quint32>::max() / 2)
        return fail(QStringLiteral("more references than the limit"));
    *count = quint32(size);
    if (size > longArray) {
        if (const auto known = longArrays_.constFind(array); known != longArrays_.constEnd()) {
            *first = *known;
            return true;
        }
        longArrays_.insert(array, quint32(references.size()));
    }
    *first = quint32(references.size());
    std::array<quint64, 64> uids;
    for (qsizetype i = 0; i < size;) {
        const std::size_t wanted = std::min(uids.size(), std::size_t(size - i));
        const std::size_t got = properties_.uids(array, i, std::span(uids).first(wanted));
        for (std::size_t j = 0; j < got; ++j) {
            const std::optional<Slot> slot = slotForUID(uids[j]);
            if (!slot)
                return false;
            references.push_back(*slot);
        }
        i += qsizetype(got);
        if (got == wanted)
            continue;
        const std::optional<Slot> slot = slotFor(properties_.element(array, i++));
        if (!slot)
            return false;
        references.push_back(*slot);
    }
    return true;
}

std::optional<quint64> KeyedArchiveReader::reference(Handle property) const
{
    switch (properties_.type(property)) {
    case PropertyListType::UID:
        return properties_.uid(property);
    case PropertyListType::Dictionary: {
        if (properties_.count(property) != 1 ||
            properties_.string(properties_.key(property, 0)) != referenceKey)
            return std::nullopt;
        const Handle value = properties_.valueAt(property, 0);
        if (properties_.type(value) != PropertyListType::Integer)
            return std::nullopt;
        bool valid = false;
        const quint64 uid = properties_.scalar(value).toULongLong(&valid);
        return valid ? std::optional(uid) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<KeyedArchiveReader::Slot> KeyedArchiveReader::slotForUID(quint64 uid)
{
    if (uid == 0)
        return 0;
    if (uid >= slotOfUID_.size()) {
        fail(QStringLiteral("a reference to object %1 of %2")
                 .arg(QString::number(uid), QString::number(slotOfUID_.size())));
        return std::nullopt;
    }
    Slot &slot = slotOfUID_[uid];
    if (slot == 0)
        slot = addObject(properties_.element(archivedObjects_, qsizetype(uid)));
    return slot;
}

std::optional<KeyedArchiveReader::Slot> KeyedArchiveReader::slotFor(Handle property)
{
    if (const std::optional<quint64> uid = reference(property))
        return slotForUID(*uid);
    if (const auto known = inlined_.constFind(property); known != inlined_.constEnd())
        return *known;
    const Slot slot = addObject(property);
    inlined_.insert(property, slot);
    return slot;
}

KeyedArchiveReader::Slot KeyedArchiveReader::addObject(Handle property)
{
    const Slot slot = Slot(source_->objects_.size());
    Object &object = source_->objects_.emplace_back();
    object.property = property;
    progress_.emplace_back();
    return slot;
}

std::optional<KeyedArchiveReader::Handle> KeyedArchiveReader::followed(Handle property)
{
    const std::optional<quint64> uid = reference(property);
    if (!uid)
        return property;
    if (*uid == 0 || *uid >= slotOfUID_.size())
        return std::nullopt;
    const Handle object = properties_.element(archivedObjects_, qsizetype(*uid));
    return reference(object) ? std::nullopt : std::optional(object);
}

bool KeyedArchiveReader::fail(const QString &reason)
{
    if (error_.isEmpty())
        error_ = reason;
    return false;
}
