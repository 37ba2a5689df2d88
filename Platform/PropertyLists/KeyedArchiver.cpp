// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedArchiver.h"

#include "Platform/PropertyLists/DictionaryEntries.h"
#include "Platform/PropertyLists/KeyedArchiveFormat.h"

#include <algorithm>
#include <limits>

using namespace KeyedArchiveFormat;
using PropertyList::WriteResult;

KeyedArchiver::KeyedArchiver()
{
    add({writer_.string(nullMarker)});
}

KeyedArchiver::Ref KeyedArchiver::add(const Object &object)
{
    const Ref ref = Ref(objects_.size());
    makeRoom(objects_, 1);
    objects_.push_back(object);
    objects_.back().uid = writer_.unsharedUID(ref);
    return ref;
}

KeyedArchiver::Ref KeyedArchiver::shared(PropertyRef property, bool isString)
{
    if (property >= uidOfProperty_.size()) {
        const std::size_t size = std::size_t(property) + 1;
        makeRoom(uidOfProperty_, size - uidOfProperty_.size());
        uidOfProperty_.resize(size);
    }
    Ref &ref = uidOfProperty_[property];
    if (ref == 0)
        ref = add({.property = property, .isString = isString});
    return ref;
}

KeyedArchiver::Ref KeyedArchiver::boolean(bool value)
{
    return shared(writer_.boolean(value));
}

KeyedArchiver::Ref KeyedArchiver::integer(qint64 value)
{
    return shared(writer_.integer(value));
}

KeyedArchiver::Ref KeyedArchiver::unsignedInteger(quint64 value)
{
    return shared(writer_.unsignedInteger(value));
}

KeyedArchiver::Ref KeyedArchiver::real(double value)
{
    return shared(writer_.real(value));
}

KeyedArchiver::Ref KeyedArchiver::data(QByteArrayView value)
{
    return shared(writer_.data(value));
}

KeyedArchiver::Ref KeyedArchiver::data(const QByteArray &value)
{
    return shared(writer_.data(value));
}

KeyedArchiver::Ref KeyedArchiver::string(QStringView value)
{
    return string(coming(value));
}

KeyedArchiver::Ref KeyedArchiver::string(const QString &value)
{
    return string(coming(value));
}

KeyedArchiver::Ref KeyedArchiver::string(const ComingString &value)
{
    if (value.text != nullMarker)
        return shared(writer_.string(value), true);
    if (nullMarkerString_ == 0) {
        const PropertyRef keys[] = {writer_.string(stringField), writer_.string(classKey)};
        const PropertyRef values[] = {writer_.string(value), uidOfClass(MutableStringClass)};
        nullMarkerString_ = add({.property = writer_.dictionary(keys, values), .isString = true});
    }
    return nullMarkerString_;
}

KeyedArchiver::Ref KeyedArchiver::date(const QDateTime &value)
{
    const std::optional<double> seconds = PropertyList::dateSeconds(value);
    return seconds ? date(PropertyList::Date{*seconds}) : invalid(QStringLiteral("an invalid date"));
}

KeyedArchiver::Ref KeyedArchiver::date(PropertyList::Date value)
{
    const PropertyRef seconds = writer_.real(value.seconds);
    Ref &ref = dates_[seconds];
    if (ref == 0) {
        const PropertyRef keys[] = {writer_.string(timeField), writer_.string(classKey)};
        const PropertyRef values[] = {seconds, uidOfClass(DateClass)};
        ref = add({.property = writer_.dictionary(keys, values)});
    }
    return ref;
}

KeyedArchiver::PropertyRef KeyedArchiver::uidOfClass(ClassIndex index)
{
    static constexpr std::array<std::array<QStringView, 3>, ClassCount> hierarchies{{
        {mutableDictionaryClass, dictionaryClass, objectClass},
        {dictionaryClass, objectClass},
        {mutableArrayClass, arrayClass, objectClass},
        {arrayClass, objectClass},
        {mutableStringClass, stringClass, objectClass},
        {dateClass, objectClass},
        {nullClass, objectClass},
    }};
    Ref &ref = classes_[index];
    if (ref == 0) {
        std::vector<PropertyRef> names;
        for (const QStringView name : hierarchies[index]) {
            if (!name.isEmpty())
                names.push_back(writer_.string(name));
        }
        const PropertyRef keys[] = {writer_.string(classNameKey), writer_.string(classesKey)};
        const PropertyRef values[] = {names.front(), writer_.array(names)};
        ref = add({.property = writer_.dictionary(keys, values)});
    }
    return objects_[ref].uid;
}

KeyedArchiver::Ref KeyedArchiver::nullObject()
{
    if (nullObject_ == 0) {
        const PropertyRef keys[] = {writer_.string(classKey)};
        const PropertyRef values[] = {uidOfClass(NullClass)};
        nullObject_ = add({.property = writer_.dictionary(keys, values)});
    }
    return nullObject_;
}

KeyedArchiver::PropertyRef KeyedArchiver::uidArray(std::span<const Ref> refs)
{
    scratch_.clear();
    for (const Ref ref : refs)
        scratch_.push_back(objects_[ref != null() ? ref : nullObject()].uid);
    return writer_.array(scratch_);
}

KeyedArchiver::Object KeyedArchiver::containerOf(std::span<const Ref> parts, std::size_t keys)
{
    ownCost_ += PropertyList::Limits::containerCost + keys + parts.size();
    quint64 cost = PropertyList::Limits::containerCost + keys;
    quint16 depth = 0;
    for (const Ref part : parts) {
        cost += objects_[part].cost;
        depth = std::max(depth, objects_[part].depth);
    }
    Object object;
    object.cost = quint32(std::min<quint64>(cost, std::numeric_limits<quint32>::max()));
    object.depth = quint16(std::min<int>(depth + 1, std::numeric_limits<quint16>::max()));
    return object;
}

KeyedArchiver::Ref KeyedArchiver::array(std::span<const Ref> elements, Mutability mutability)
{
    const ClassIndex index = mutability == Mutability::Mutable ? MutableArrayClass : ArrayClass;
    const PropertyRef keys[] = {writer_.string(objectsField), writer_.string(classKey)};
    const PropertyRef values[] = {uidArray(elements), uidOfClass(index)};
    Object object = containerOf(elements, 0);
    object.property = writer_.dictionary(keys, values);
    return add(object);
}

KeyedArchiver::Ref KeyedArchiver::dictionary(std::span<const Ref> keys, std::span<const Ref> values,
                                             Mutability mutability)
{
    if (keys.size() != values.size())
        return invalid(QStringLiteral("a dictionary whose keys and values differ in number"));
    for (const Ref key : keys) {
        if (!objects_[key].isString)
            return invalid(QStringLiteral("a dictionary key that is no string"));
        if (key != nullMarkerString_ &&
            writer_.length(objects_[key].property) > std::size_t(PropertyList::Limits::keySize))
            return invalid(QStringLiteral("a dictionary key of more than %1 characters")
                               .arg(PropertyList::Limits::keySize));
    }
    // Equal strings have the same UID.
    if (DictionaryEntries::hasRepeatedKey(keys)) {
        const DictionaryEntries entries = DictionaryEntries::withLastOfEachKey(keys, values);
        return dictionary(entries.keys, entries.values, mutability);
    }

    const ClassIndex index = mutability == Mutability::Mutable ? MutableDictionaryClass : DictionaryClass;
    const PropertyRef fields[] = {writer_.string(keysField), writer_.string(objectsField),
                                  writer_.string(classKey)};
    const PropertyRef contents[] = {uidArray(keys), uidArray(values), uidOfClass(index)};
    Object object = containerOf(values, keys.size());
    object.property = writer_.dictionary(fields, contents);
    return add(object);
}

KeyedArchiver::Ref KeyedArchiver::invalid(const QString &reason)
{
    if (error_.isEmpty())
        error_ = reason;
    return null();
}

WriteResult KeyedArchiver::finish(Ref root)
{
    if (!error_.isEmpty())
        return {std::nullopt, error_};
    if (objects_[root].depth > PropertyList::Limits::depth)
        return {std::nullopt,
                QStringLiteral("more than %1 levels of nesting").arg(PropertyList::Limits::depth)};

    const BinaryPropertyListWriter::Mark mark = writer_.mark();
    const PropertyRef rootKeys[] = {writer_.string(rootKey)};
    const PropertyRef rootValues[] = {objects_[root].uid};
    LargeArray<PropertyRef> properties;
    properties.reserve(objects_.size());
    for (const Object &object : objects_)
        properties.push_back(object.property);
    const PropertyRef keys[] = {writer_.string(versionKey), writer_.string(archiverKey),
                                writer_.string(topKey), writer_.string(objectsKey)};
    const PropertyRef values[] = {writer_.integer(version), writer_.string(archiverName),
                                  writer_.dictionary(rootKeys, rootValues), writer_.array(properties)};
    WriteResult result = writer_.finish(writer_.dictionary(keys, values));
    writer_.rewind(mark);
    if (result && objects_[root].cost > PropertyList::Limits::mostCost(ownCost_, result.bytes->size()))
        return {std::nullopt, QStringLiteral("shared parts stand for too many values")};
    return result;
}

WriteResult KeyedArchiver::archivedDataWithRootObject(const QVariant &root)
{
    KeyedArchiver archiver;
    return archiver.finish(archiver.value(root));
}
