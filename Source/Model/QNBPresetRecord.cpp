// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPresetRecord.h"

#include <span>
#include <utility>
#include <vector>

QNBPresetRecordPtr QNBPresetRecord::fromStored(const PropertyListNode &dictionary,
                                               const PropertyListDocument::Ptr &document)
{
    PropertyListNode::MadeValues made;
    return fromStored(dictionary, document, made);
}

QList<QNBPresetRecordPtr> QNBPresetRecord::listFromStored(const PropertyListNode &array,
                                                          const PropertyListDocument::Ptr &document)
{
    PropertyListNode::MadeValues made;
    QHash<PropertyListSource::Handle, QNBPresetRecordPtr> records;
    QList<QNBPresetRecordPtr> list;
    list.reserve(array.count());
    for (qsizetype i = 0; i < array.count(); ++i) {
        const PropertyListNode entry = array.at(i);
        if (!entry.isDictionary()) {
            list.append(QNBPresetRecordPtr());
        } else if (const QNBPresetRecordPtr same = records.value(entry.handle())) {
            list.append(std::make_shared<QNBPresetRecord>(*same));
        } else {
            list.append(fromStored(entry, document, made));
            records.insert(entry.handle(), list.constLast());
        }
    }
    return list;
}

QNBPresetRecordPtr QNBPresetRecord::fromStored(const PropertyListNode &dictionary,
                                               const PropertyListDocument::Ptr &document,
                                               PropertyListNode::MadeValues &made)
{
    auto record = std::make_shared<QNBPresetRecord>();
    StoredHierarchy hierarchy{{}, document};
    const qsizetype count = dictionary.isDictionary() ? dictionary.count() : 0;
    for (qsizetype i = 0; i < count; ++i) {
        const QString &key = dictionary.keyAt(i);
        if (key == QNBPresetKey::fileHierarchy)
            hierarchy.node = dictionary.valueAt(i);
        else
            record->values_.insert(key, dictionary.valueAt(i).toVariant(made));
    }
    record->storedHierarchy_ = hierarchy;
    if (!document)
        record->buildHierarchy();
    return record;
}

void QNBPresetRecord::buildHierarchy() const
{
    if (!storedHierarchy_)
        return;
    const PropertyListNode &node = storedHierarchy_->node;
    if (!node.isNull() && !node.isDictionary())
        readReport_ = {1, QNBPresetKey::fileHierarchy};
    fileHierarchy_ = QNBHierarchyItem::initWithDictionary(node, {}, &readReport_);
    storedHierarchy_.reset();
}

QNBHierarchyItem::ReadReport QNBPresetRecord::takeReadReport()
{
    buildHierarchy();
    return std::exchange(readReport_, {});
}

const QNBHierarchyItemPtr &QNBPresetRecord::fileHierarchy() const
{
    buildHierarchy();
    return fileHierarchy_;
}

void QNBPresetRecord::setFileHierarchy(const QNBHierarchyItemPtr &root)
{
    buildHierarchy();
    fileHierarchy_ = root;
}

namespace {

/// \a tree may be null.
template <class Tree, class Writer>
typename Writer::Ref encodeRecord(const QVariantMap &record, const Tree *tree, Writer &writer)
{
    std::vector<typename Writer::Ref> keys;
    std::vector<typename Writer::Ref> values;
    for (auto entry = record.cbegin(); entry != record.cend(); ++entry) {
        keys.push_back(writer.string(entry.key()));
        values.push_back(writer.value(entry.value()));
    }
    if (tree) {
        keys.push_back(writer.string(QNBPresetKey::fileHierarchy));
        values.push_back(tree->encode(writer));
    }
    return writer.dictionary(keys, values);
}

} // namespace

QVariantMap QNBPresetRecord::toStored() const
{
    QVariantMap stored = values_;
    if (fileHierarchy())
        stored.insert(QNBPresetKey::fileHierarchy, fileHierarchy()->toDictionary());
    return stored;
}

BinaryPropertyListWriter::Ref QNBPresetRecord::encode(BinaryPropertyListWriter &writer) const
{
    return encodeRecord(values_, fileHierarchy().get(), writer);
}

KeyedArchiver::Ref QNBPresetRecord::encode(KeyedArchiver &archiver) const
{
    return encodeRecord(values_, fileHierarchy().get(), archiver);
}

QNBPresetSnapshot QNBPresetRecord::snapshot() const
{
    QNBPresetSnapshot snapshot;
    snapshot.values_ = values_;
    if (fileHierarchy())
        snapshot.tree_ = fileHierarchy()->snapshot();
    return snapshot;
}

BinaryPropertyListWriter::Ref QNBPresetSnapshot::encode(BinaryPropertyListWriter &writer) const
{
    return encodeRecord(values_, tree_ ? &*tree_ : nullptr, writer);
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
