// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/KeyValueCoding.h"
#include "Source/QNBHierarchyItem.h"

#include <QVariantMap>
#include <memory>

class QNBPresetRecord;
using QNBPresetRecordPtr = std::shared_ptr<QNBPresetRecord>;

/// The keys of a preset record.
namespace QNBPresetKey {
inline const QString label = QStringLiteral("label");
inline const QString fileHierarchy = QStringLiteral("fileHierarchy");
inline const QString scriptFile = QStringLiteral("scriptFile");
inline const QString presetDescription = QStringLiteral("presetDescription");
} // namespace QNBPresetKey

/// One preset: a dictionary whose "fileHierarchy" is a tree of items in memory and an item dictionary when
/// stored. Every other key is carried through unchanged, whatever it holds.
class QNBPresetRecord final : public KeyValueCoding
{
public:
    QNBPresetRecord() = default;

    /// Takes over a stored record: "fileHierarchy" becomes a tree with new identifiers (an empty item if the
    /// key is absent), the rest stays as it is.
    static QNBPresetRecordPtr fromStored(const PropertyListNode &dictionary,
                                         QNBHierarchyItem::ReadReport *report = nullptr);

    /// The stored form, without identifiers; straight into a property list or an archive.
    QVariantMap toStored() const;
    BinaryPropertyListWriter::Ref encode(BinaryPropertyListWriter &writer) const;
    KeyedArchiver::Ref encode(KeyedArchiver &archiver) const;

    /// The tree; null in a record that was never given one.
    const QNBHierarchyItemPtr &fileHierarchy() const { return fileHierarchy_; }
    void setFileHierarchy(const QNBHierarchyItemPtr &root) { fileHierarchy_ = root; }

    /// The text under "label"; empty if that is no string.
    QString label() const;

    /// Every key but "fileHierarchy".
    const QVariantMap &values() const { return values_; }

    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;

private:
    QVariantMap values_;
    QNBHierarchyItemPtr fileHierarchy_;
};
