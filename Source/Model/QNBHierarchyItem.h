// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/PropertyListNode.h"
#include "Shared/Source/CocoaCryptoHashing.h"
#include "Source/Model/QNBTreeSnapshot.h"

#include <QHash>
#include <QString>
#include <QVariantMap>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class QNBChildNames;
class QNBHierarchyItem;
using QNBHierarchyItemPtr = std::shared_ptr<QNBHierarchyItem>;

/// One node of a preset's tree: a folder or a file that the helper creates.
///
/// An item owns its children and has a weak link to its parent. It is identified by its uid, 40 lowercase
/// hexadecimal characters that stay the same for its life; they are stored only where asked for, so that
/// trees read from the preference domain get new ones. Used by one thread at a time, in const functions too:
/// uid() keeps what it has made. Reading, writing and destroying a tree need no stack in proportion to its
/// depth.
class QNBHierarchyItem : public std::enable_shared_from_this<QNBHierarchyItem>
{
    struct Private
    {
        explicit Private() = default;
    };

public:
    using Children = std::vector<QNBHierarchyItemPtr>;
    /// What indexOfChild() answers for an item that is no child.
    static constexpr std::size_t notFound = std::numeric_limits<std::size_t>::max();

    /// What a reader met that the item could not take over: values of the wrong type, which count as absent,
    /// and keys that are no item's. Writing the tree back loses them.
    struct ReadReport
    {
        qsizetype losses = 0;
        /// The key of the first of them, for the log.
        QString first;
    };

    /// For make_shared only; use the factories.
    explicit QNBHierarchyItem(Private);
    ~QNBHierarchyItem();
    QNBHierarchyItem(const QNBHierarchyItem &) = delete;
    QNBHierarchyItem &operator=(const QNBHierarchyItem &) = delete;

    /// A file named "" without a parent.
    static QNBHierarchyItemPtr init();
    static QNBHierarchyItemPtr initWithParent(const QNBHierarchyItemPtr &parent);
    /// The children are shared and keep their own parent links. The item is a folder exactly when the low 8
    /// bits of the number of children are not zero: 256 children make a file.
    static QNBHierarchyItemPtr initWithParentAndChildren(const QNBHierarchyItemPtr &parent,
                                                         const Children &children);
    /// Reads an item dictionary. Every key is optional; a value of the wrong type counts as absent.
    static QNBHierarchyItemPtr initWithDictionary(const QVariantMap &dictionary,
                                                  const QNBHierarchyItemPtr &andParent = {});
    /// The same from a parsed document; a node that is no dictionary reads as an empty one.
    static QNBHierarchyItemPtr initWithDictionary(const PropertyListNode &dictionary,
                                                  const QNBHierarchyItemPtr &andParent = {},
                                                  ReadReport *report = nullptr);

    /// A new item dictionary with just these entries, each only if it says something. \a children may be
    /// null.
    static QVariantMap itemDictionaryWithFilename(const QString &filename, bool isDirectory,
                                                  const QVariantList *children);

    QVariantMap toDictionaryWithUID(bool includeUID) const;
    QVariantMap toDictionary() const { return toDictionaryWithUID(false); }
    /// toDictionary(), or toDictionaryWithUID(), straight into a property list or an archive.
    BinaryPropertyListWriter::Ref encode(BinaryPropertyListWriter &writer) const;
    KeyedArchiver::Ref encode(KeyedArchiver &archiver, bool includeUID = false) const;
    /// What encode() needs, at a small part of its cost.
    QNBTreeSnapshot snapshot() const;

    std::size_t numberOfChildren() const { return children_.size(); }
    /// Null when \a index is at or past the count; a negative one always is.
    QNBHierarchyItemPtr childAtIndex(std::int32_t index) const;
    /// By identity, not by uid.
    std::size_t indexOfChild(const QNBHierarchyItem *item) const;
    void addChild(const QNBHierarchyItemPtr &item);
    /// Directly after \a existingItem, or first when that is no child.
    void addChildAfterExistingChild(const QNBHierarchyItemPtr &newItem,
                                    const QNBHierarchyItemPtr &existingItem);
    /// The removed item keeps its link to this parent.
    void removeChild(const QNBHierarchyItemPtr &item);
    /// Whether an item with the same uid stands below, searched depth-first through folders only.
    bool hasChild(const QNBHierarchyItem &item) const;
    /// Replaces all children by this one.
    void setChild(const QNBHierarchyItemPtr &item);

    const Children &children() const { return children_; }
    void setChildren(const Children &children);

    /// With fewer children a look at each of their names is not worth avoiding.
    static constexpr std::size_t fewestIndexedNames = 500;
    /// Makes an index of the children's names, unless they are few, one is very long or has another parent.
    /// It follows every edit, until it is dropped: by the caller, or by an edit that it cannot follow.
    void indexChildNames();
    void dropChildNames();
    /// The index; null if there is none.
    const QNBChildNames *childNames() const { return childNames_.get(); }

    /// The keys of customPermissions(): owner, group, others.
    inline static const std::array<QString, 3> permissionKeys{QStringLiteral("u"), QStringLiteral("g"),
                                                              QStringLiteral("o")};
    /// The permission digits (4 read, 2 write, 1 execute) of those of the keys that are set.
    QVariantMap customPermissions() const;
    /// The same without the keys; 0 for those that are not set.
    const std::array<std::uint32_t, 3> &permissionTriple() const { return permissions_; }
    void setCustomPermissions(const QVariantMap &permissions);

    const QString &colorName() const { return colorName_; }
    void setColorName(const QString &name) { colorName_ = name; }
    const QString &contentFilename() const { return contentFilename_; }
    void setContentFilename(const QString &name) { contentFilename_ = name; }
    const QString &filename() const { return filename_; }
    void setFilename(const QString &name);

    QNBHierarchyItemPtr parent() const { return parent_.lock(); }
    QString uid() const;
    bool isDirectory() const { return isFolder_; }

    /// Same uid.
    bool isEqualTo(const QNBHierarchyItem &item) const;
    /// A new item with the same name, kind, parent and child objects; colour, content file and permissions
    /// are the defaults, and the uid is new.
    QNBHierarchyItemPtr copyWithZone() const;
    QString description() const;

private:
    friend class QNBItemDictionaryReader;

    /// The names that are so long that digesting them for each of the items that share one would take long,
    /// by their place in memory; each is held on to.
    struct LongName
    {
        QString name;
        CocoaCryptoHashing::SHA1Beginning digest;
    };
    using LongNames = QHash<const QChar *, LongName>;

    /// What the digest is made of besides the name and the kind.
    struct Seed
    {
        std::uint32_t secondsHigh, secondsLow, microseconds, random, children;
    };

    static QNBHierarchyItemPtr newItem();
    /// With \a longNames, a long name that items share is digested once, and the others are when their uid is
    /// asked for: of most items that are read it never is.
    void generateUID(LongNames *longNames = nullptr);
    const CocoaCryptoHashing::SHA1Digest &digest() const;
    char *writeNumbers(char *to, const Seed &seed) const;
    /// Keeps a uid that was stored.
    void setUid(const QString &uid);
    template <class Sink>
    class PendingItems;
    void setParent(const QNBHierarchyItemPtr &parent);

    Children children_;
    std::weak_ptr<QNBHierarchyItem> parent_;
    QString filename_;
    QString colorName_;
    QString contentFilename_;
    /// A stored uid that is no digest's hexadecimal form; the digest counts if null.
    std::unique_ptr<const QString> givenUid_;
    /// While there is one, this item is the parent of all its children.
    std::unique_ptr<QNBChildNames> childNames_;
    /// The bytes of the seed as long as hasSeed_.
    mutable CocoaCryptoHashing::SHA1Digest digest_{};
    /// Owner, group, others, as in permissionKeys.
    std::array<std::uint32_t, 3> permissions_;
    std::array<bool, 3> hasPermission_{true, true, true};
    bool isFolder_ = false;
    mutable bool hasSeed_ = false;
};
