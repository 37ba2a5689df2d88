// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/KeyValueCoding.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Source/Model/QNBHierarchyItem.h"

#include <QList>
#include <QVariantMap>
#include <memory>
#include <optional>

class QNBPresetRecord;
class QNBPresetSnapshot;
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
    /// key is absent), the rest stays as it is. With the document that \a dictionary belongs to, the tree is
    /// built when it is first asked for: of many presets, few are looked at.
    static QNBPresetRecordPtr fromStored(const PropertyListNode &dictionary,
                                         const PropertyListDocument::Ptr &document = {});
    /// The records of an array of them, with the document that it belongs to; null for an element that is no
    /// dictionary. What the document shares, the records share, except for their trees.
    static QList<QNBPresetRecordPtr> listFromStored(const PropertyListNode &array,
                                                    const PropertyListDocument::Ptr &document);

    /// What the stored tree held that has no place in the items; told once. Builds the tree.
    QNBHierarchyItem::ReadReport takeReadReport();

    /// The stored form, without identifiers; straight into a property list or an archive.
    QVariantMap toStored() const;
    BinaryPropertyListWriter::Ref encode(BinaryPropertyListWriter &writer) const;
    KeyedArchiver::Ref encode(KeyedArchiver &archiver) const;
    /// What the first of them needs; builds the tree.
    QNBPresetSnapshot snapshot() const;

    /// The tree; null in a record that was never given one.
    const QNBHierarchyItemPtr &fileHierarchy() const;
    void setFileHierarchy(const QNBHierarchyItemPtr &root);

    /// The text under "label"; empty if that is no string.
    QString label() const;

    /// Every key but "fileHierarchy".
    const QVariantMap &values() const { return values_; }

    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;

private:
    /// A tree that is still in the form it was stored in.
    struct StoredHierarchy
    {
        PropertyListNode node;
        /// Keeps the node valid.
        PropertyListDocument::Ptr document;
    };

    static QNBPresetRecordPtr fromStored(const PropertyListNode &dictionary,
                                         const PropertyListDocument::Ptr &document,
                                         PropertyListNode::MadeValues &made);
    void buildHierarchy() const;

    QVariantMap values_;
    mutable std::optional<StoredHierarchy> storedHierarchy_;
    mutable QNBHierarchyItemPtr fileHierarchy_;
    mutable QNBHierarchyItem::ReadReport readReport_;
};

/// A preset as it stood at one moment, to be written on any thread while it changes.
class QNBPresetSnapshot
{
public:
    /// The same as QNBPresetRecord::encode() at that moment.
    BinaryPropertyListWriter::Ref encode(BinaryPropertyListWriter &writer) const;

private:
    friend class QNBPresetRecord;

    QVariantMap values_;
    std::optional<QNBTreeSnapshot> tree_;
};
