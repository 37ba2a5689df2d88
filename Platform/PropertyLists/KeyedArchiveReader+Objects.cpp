// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The part of the reader that knows classes and their fields.

#include "Platform/PropertyLists/KeyedArchiveFormat.h"
#include "Platform/PropertyLists/KeyedArchiveReader.h"

#include <QStringDecoder>

#include <utility>

using namespace KeyedArchiveFormat;

bool KeyedArchiveReader::readObject(Slot slot)
{
    const Handle property = source_->objects_[slot].property;
    const PropertyListType type = properties_.type(property);
    switch (type) {
    case PropertyListType::UID:
        return fail(QStringLiteral("an object is a mere reference"));
    case PropertyListType::Dictionary:
        return readDictionaryProperty(slot, property);
    case PropertyListType::Array: {
        quint32 first = 0;
        quint32 count = 0;
        if (!readReferences(property, &first, &count))
            return false;
        setContainer(slot, PropertyListType::Array, first, 0, count);
        return true;
    }
    default:
        setScalar(slot, type, Storage::Property, property);
        return true;
    }
}

bool KeyedArchiveReader::readDictionaryProperty(Slot slot, Handle property)
{
    const Fields fields = readFields(property);
    if (!fields.has(Class)) {
        if (fields.present != 0 || fields.others || fields.numberedKeys != 0 || fields.numberedObjects != 0)
            return fail(QStringLiteral("an object without a class"));
        return readPlainDictionary(slot, property);
    }
    const std::optional<Kind> kind = kindOf(fields.values[Class]);
    if (!kind)
        return false;
    switch (*kind) {
    case Kind::Dictionary:
        return readDictionary(slot, property, fields);
    case Kind::Array:
        return readArray(slot, property, fields);
    case Kind::String:
        return readString(slot, fields);
    case Kind::Data:
        return readData(slot, fields);
    case Kind::Date:
        return readDate(slot, fields);
    case Kind::Number:
        return readNumber(slot, fields);
    case Kind::Null:
        break;
    }
    setScalar(slot, PropertyListType::Null, Storage::Property, property);
    return true;
}

KeyedArchiveReader::Fields KeyedArchiveReader::readFields(Handle property)
{
    Fields fields;
    const qsizetype count = properties_.count(property);
    for (qsizetype i = 0; i < count; ++i) {
        const Field field = fieldOf(properties_.key(property, i));
        if (field < FieldCount) {
            fields.values[field] = properties_.valueAt(property, i);
            fields.present |= 1U << field;
        } else if (field == NumberedObject) {
            ++fields.numberedObjects;
        } else if (field == NumberedKey) {
            ++fields.numberedKeys;
        } else if (field == OtherField) {
            fields.others = true;
        }
    }
    return fields;
}

KeyedArchiveReader::Field KeyedArchiveReader::fieldOf(Handle key)
{
    const std::size_t known = std::min(knownFieldCount_, knownFields_.size());
    for (std::size_t i = 0; i < known; ++i) {
        if (knownFields_[i].key == key)
            return knownFields_[i].field;
    }
    static constexpr std::array<QStringView, FieldCount> names = {
        keysField,  objectsField, stringField,  bytesField, dataField,    timeField,
        firstField, numberField,  integerField, realField,  booleanField, classKey};
    const QString &name = properties_.string(key);
    Field field = PlainKey;
    if (const auto found = std::find(names.begin(), names.end(), name); found != names.end())
        field = Field(found - names.begin());
    else if (name.startsWith(numberedObjectPrefix))
        field = NumberedObject;
    else if (name.startsWith(numberedKeyPrefix))
        field = NumberedKey;
    else if (name.startsWith(u"NS.") || name.startsWith(u'$'))
        field = OtherField;
    knownFields_[knownFieldCount_++ % knownFields_.size()] = {key, field};
    return field;
}

bool KeyedArchiveReader::readPlainDictionary(Slot slot, Handle property)
{
    const qsizetype count = properties_.count(property);
    std::vector<quint32> &references = source_->references_;
    if (quint64(count) * 2 + references.size() > std::numeric_limits<quint32>::max() / 2)
        return fail(QStringLiteral("more references than the limit"));
    const quint32 first = quint32(references.size());
    for (qsizetype i = 0; i < count * 2; ++i) {
        const std::optional<Slot> part =
            slotFor(i < count ? properties_.key(property, i) : properties_.valueAt(property, i - count));
        if (!part)
            return false;
        references.push_back(*part);
    }
    setContainer(slot, PropertyListType::Dictionary, first, first + quint32(count), quint32(count));
    return true;
}

bool KeyedArchiveReader::readDictionary(Slot slot, Handle property, const Fields &fields)
{
    quint32 first = 0;
    quint32 firstValue = 0;
    quint32 count = 0;
    if (fields.has(Keys) && fields.has(Objects)) {
        const std::optional<Handle> keys = followed(fields.values[Keys]);
        const std::optional<Handle> objects = followed(fields.values[Objects]);
        if (!keys || !objects || properties_.type(*keys) != PropertyListType::Array ||
            properties_.type(*objects) != PropertyListType::Array)
            return fail(QStringLiteral("the keys or values of a dictionary are no array"));
        quint32 values = 0;
        if (!readReferences(*keys, &first, &count) || !readReferences(*objects, &firstValue, &values))
            return false;
        if (count != values)
            return fail(QStringLiteral("a dictionary of %1 keys and %2 values")
                            .arg(QString::number(count), QString::number(values)));
    } else if (fields.numberedKeys > 0 && fields.numberedKeys == fields.numberedObjects) {
        count = quint32(fields.numberedKeys);
        if (!readNumbered(property, NumberedKey, numberedKeyPrefix, fields.numberedKeys, &first) ||
            !readNumbered(property, NumberedObject, numberedObjectPrefix, fields.numberedObjects,
                          &firstValue))
            return false;
    } else if (properties_.count(property) != 1) {
        // Only an empty dictionary of the older writers has no field but its class.
        return failMissing(dictionaryClass);
    }
    setContainer(slot, PropertyListType::Dictionary, first, firstValue, count);
    return true;
}

bool KeyedArchiveReader::readArray(Slot slot, Handle property, const Fields &fields)
{
    quint32 first = 0;
    quint32 count = 0;
    if (fields.has(Objects)) {
        const std::optional<Handle> objects = followed(fields.values[Objects]);
        if (!objects || properties_.type(*objects) != PropertyListType::Array)
            return fail(QStringLiteral("the elements of an array are no array"));
        if (!readReferences(*objects, &first, &count))
            return false;
    } else if (fields.numberedObjects > 0) {
        count = quint32(fields.numberedObjects);
        if (!readNumbered(property, NumberedObject, numberedObjectPrefix, fields.numberedObjects, &first))
            return false;
    } else if (properties_.count(property) != 1) {
        return failMissing(arrayClass);
    }
    setContainer(slot, PropertyListType::Array, first, 0, count);
    return true;
}

bool KeyedArchiveReader::readNumbered(Handle property, Field wanted, QStringView prefix, qsizetype count,
                                      quint32 *first)
{
    std::vector<std::optional<Slot>> entries(std::size_t(count), std::nullopt);
    for (qsizetype i = 0; i < properties_.count(property); ++i) {
        const Handle key = properties_.key(property, i);
        if (fieldOf(key) != wanted)
            continue;
        bool valid = false;
        const qlonglong number =
            QStringView(properties_.string(key)).sliced(prefix.size()).toLongLong(&valid);
        if (!valid || number < 0 || number >= count || entries[std::size_t(number)])
            return fail(QStringLiteral("numbered fields with a gap"));
        const std::optional<Slot> slot = slotFor(properties_.valueAt(property, i));
        if (!slot)
            return false;
        entries[std::size_t(number)] = slot;
    }
    *first = quint32(source_->references_.size());
    for (const std::optional<Slot> &entry : entries)
        source_->references_.push_back(*entry); // as many as there are numbers, none twice: all are set
    return true;
}

bool KeyedArchiveReader::readString(Slot slot, const Fields &fields)
{
    const bool asString = fields.has(String);
    if (!asString && !fields.has(Bytes))
        return failMissing(stringClass);
    const std::optional<Handle> content = followed(fields.values[asString ? String : Bytes]);
    const PropertyListType type = content ? properties_.type(*content) : PropertyListType::Null;
    if (type == PropertyListType::String) {
        setScalar(slot, PropertyListType::String, Storage::Property, *content);
        return true;
    }
    if (type != PropertyListType::Data)
        return fail(QStringLiteral("the content of a string is no string"));
    if (const auto known = decoded_.constFind(*content); known != decoded_.constEnd()) {
        setScalar(slot, PropertyListType::String, Storage::Text, 0);
        source_->objects_[slot].first = *known;
        return true;
    }
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(properties_.scalar(*content).toByteArray());
    if (decoder.hasError())
        return fail(QStringLiteral("the bytes of a string are no UTF-8"));
    source_->texts_.push_back(std::move(text));
    setScalar(slot, PropertyListType::String, Storage::Text, 0);
    source_->objects_[slot].first = quint32(source_->texts_.size() - 1);
    decoded_.insert(*content, source_->objects_[slot].first);
    return true;
}

bool KeyedArchiveReader::readData(Slot slot, const Fields &fields)
{
    const bool asData = fields.has(Data);
    if (!asData && !fields.has(Bytes))
        return failMissing(dataClass);
    const std::optional<Handle> content = followed(fields.values[asData ? Data : Bytes]);
    if (!content || properties_.type(*content) != PropertyListType::Data)
        return fail(QStringLiteral("the content of a data object is no data"));
    setScalar(slot, PropertyListType::Data, Storage::Property, *content);
    return true;
}

bool KeyedArchiveReader::readDate(Slot slot, const Fields &fields)
{
    const bool named = fields.has(Time);
    if (!named && !fields.has(First))
        return failMissing(dateClass);
    const std::optional<Handle> seconds = followed(fields.values[named ? Time : First]);
    const PropertyListType type = seconds ? properties_.type(*seconds) : PropertyListType::Null;
    if (type != PropertyListType::Real && type != PropertyListType::Integer)
        return fail(QStringLiteral("the time of a date is no number"));
    setScalar(slot, PropertyListType::Date, Storage::Seconds, *seconds);
    return true;
}

bool KeyedArchiveReader::readNumber(Slot slot, const Fields &fields)
{
    for (const Field field : {Number, Boolean, Real, Integer}) {
        if (!fields.has(field))
            continue;
        const std::optional<Handle> content = followed(fields.values[field]);
        const PropertyListType type = content ? properties_.type(*content) : PropertyListType::Null;
        if (type != PropertyListType::Integer && type != PropertyListType::Real &&
            type != PropertyListType::Boolean)
            return fail(QStringLiteral("the content of a number is no number"));
        if (field == Boolean && type != PropertyListType::Boolean)
            setScalar(slot, PropertyListType::Boolean, Storage::Truth, *content);
        else if (field == Real && type == PropertyListType::Integer)
            setScalar(slot, PropertyListType::Real, Storage::Real, *content);
        else
            setScalar(slot, type, Storage::Property, *content);
        return true;
    }
    return failMissing(numberClass);
}

std::optional<KeyedArchiveReader::Kind> KeyedArchiveReader::kindOf(Handle description)
{
    const std::optional<quint64> uid = reference(description);
    if (uid && lastClass_ && lastClass_->first == *uid)
        return lastClass_->second;
    if (uid) {
        if (const auto known = kindOfClass_.constFind(*uid); known != kindOfClass_.constEnd()) {
            lastClass_ = {*uid, *known};
            return *known;
        }
    }
    const std::optional<Handle> content = followed(description);
    const PropertyListNode node = content ? PropertyListNode(&properties_, *content) : PropertyListNode();
    const PropertyListNode name = node.value(classNameKey);
    QStringList classes;
    if (const PropertyListNode list = node.value(classesKey); !list.isNull()) {
        const std::optional<Handle> names = followed(list.handle());
        if (!names || properties_.type(*names) != PropertyListType::Array) {
            fail(QStringLiteral("the superclasses of a class are no array"));
            return std::nullopt;
        }
        if (properties_.count(*names) > mostClassNames) {
            fail(QStringLiteral("a class with more than %1 names").arg(mostClassNames));
            return std::nullopt;
        }
        for (qsizetype i = 0; i < properties_.count(*names); ++i) {
            const std::optional<Handle> item = followed(properties_.element(*names, i));
            if (item && properties_.type(*item) == PropertyListType::String)
                classes.append(properties_.string(*item));
        }
    } else if (name.isString()) {
        classes.append(name.string());
    }
    if (classes.isEmpty()) {
        fail(QStringLiteral("an object whose class has no description"));
        return std::nullopt;
    }
    static constexpr std::pair<QStringView, Kind> kinds[] = {
        {dictionaryClass, Kind::Dictionary},
        {mutableDictionaryClass, Kind::Dictionary},
        {arrayClass, Kind::Array},
        {mutableArrayClass, Kind::Array},
        {setClass, Kind::Array},
        {mutableSetClass, Kind::Array},
        {orderedSetClass, Kind::Array},
        {mutableOrderedSetClass, Kind::Array},
        {stringClass, Kind::String},
        {mutableStringClass, Kind::String},
        {dataClass, Kind::Data},
        {mutableDataClass, Kind::Data},
        {dateClass, Kind::Date},
        {nullClass, Kind::Null},
        {numberClass, Kind::Number},
    };
    for (const QString &className : std::as_const(classes)) {
        for (const auto &[known, kind] : kinds) {
            if (className != known)
                continue;
            if (uid) {
                kindOfClass_.insert(*uid, kind);
                lastClass_ = {*uid, kind};
            }
            return kind;
        }
    }
    fail(QStringLiteral("an object of the unknown class \"%1\"")
             .arg(name.isString() ? name.string() : classes.constFirst()));
    return std::nullopt;
}

void KeyedArchiveReader::setContainer(Slot slot, PropertyListType type, quint32 first, quint32 firstValue,
                                      quint32 count)
{
    Object &object = source_->objects_[slot];
    object.type = type;
    object.first = first;
    object.firstValue = firstValue;
    object.count = count;
}

void KeyedArchiveReader::setScalar(Slot slot, PropertyListType type, Storage storage, Handle property)
{
    Object &object = source_->objects_[slot];
    object.type = type;
    object.storage = storage;
    object.property = property;
}

bool KeyedArchiveReader::failMissing(QStringView className)
{
    return fail(QStringLiteral("an object of class \"%1\" without its content").arg(className));
}
