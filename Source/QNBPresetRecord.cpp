// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPresetRecord.h"

#include <span>
#include <vector>

QNBPresetRecordPtr QNBPresetRecord::fromStored(const PropertyListNode &dictionary,
                                               QNBHierarchyItem::ReadReport *report)
{
    auto record = std::make_shared<QNBPresetRecord>();
    PropertyListNode hierarchy;
    const qsizetype count = dictionary.isDictionary() ? dictionary.count() : 0;
    for (qsizetype i = 0; i < count; ++i) {
        const QString &key = dictionary.keyAt(i);
        if (key == QNBPresetKey::fileHierarchy)
            hierarchy = dictionary.valueAt(i);
        else
            record->values_.insert(key, dictionary.valueAt(i).toVariant());
    }
    if (report && !hierarchy.isNull() && !hierarchy.isDictionary()) {
        if (report->wrongTypes++ == 0)
            report->first = QNBPresetKey::fileHierarchy;
    }
    record->fileHierarchy_ = QNBHierarchyItem::initWithDictionary(hierarchy, {}, report);
    return record;
}

namespace {

template <class Writer>
typename Writer::Ref encodeRecord(const QNBPresetRecord &record, Writer &writer)
{
    std::vector<typename Writer::Ref> keys;
    std::vector<typename Writer::Ref> values;
    for (auto entry = record.values().cbegin(); entry != record.values().cend(); ++entry) {
        keys.push_back(writer.string(entry.key()));
        values.push_back(writer.value(entry.value()));
    }
    if (record.fileHierarchy()) {
        keys.push_back(writer.string(QNBPresetKey::fileHierarchy));
        values.push_back(record.fileHierarchy()->encode(writer));
    }
    return writer.dictionary(keys, values);
}

} // namespace

QVariantMap QNBPresetRecord::toStored() const
{
    QVariantMap stored = values_;
    if (fileHierarchy_)
        stored.insert(QNBPresetKey::fileHierarchy, fileHierarchy_->toDictionary());
    return stored;
}

BinaryPropertyListWriter::Ref QNBPresetRecord::encode(BinaryPropertyListWriter &writer) const
{
    return encodeRecord(*this, writer);
}

KeyedArchiver::Ref QNBPresetRecord::encode(KeyedArchiver &archiver) const
{
    return encodeRecord(*this, archiver);
}

QString QNBPresetRecord::label() const
{
    return values_.value(QNBPresetKey::label).toString();
}

QVariant QNBPresetRecord::valueForKey(const QString &key) const
{
    return values_.value(key);
}

void QNBPresetRecord::setValueForKey(const QVariant &value, const QString &key)
{
    if (value.isValid())
        values_.insert(key, value);
    else
        values_.remove(key);
}
