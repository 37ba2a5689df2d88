// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The dictionary form of an item, read from values or from a parsed document, and written to values, a
// property list or an archive.

#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Source/Model/QNBHierarchyItem.h"

#include <QVarLengthArray>
#include <algorithm>
#include <optional>
#include <span>

namespace {

namespace Key {
const QString filename = QStringLiteral("filename");
const QString isFolder = QStringLiteral("isFolder");
const QString color = QStringLiteral("color");
const QString contentFilename = QStringLiteral("contentFilename");
const QString permissions = QStringLiteral("permissions");
const QString uid = QStringLiteral("uid");
const QString children = QStringLiteral("children");
} // namespace Key

/// The boolean value of a node; none for what has no such value.
std::optional<bool> booleanOf(const PropertyListNode &node)
{
    switch (node.type()) {
    case PropertyListType::Boolean:
        return node.boolean();
    case PropertyListType::Array:
    case PropertyListType::Dictionary:
        return {};
    default:
        return PropertyList::boolValue(node.toVariant());
    }
}

} // namespace

/// Builds a tree from nodes with a list of the folders under way instead of recursion.
class QNBItemDictionaryReader
{
public:
    explicit QNBItemDictionaryReader(QNBHierarchyItem::ReadReport *report)
        : report_(report)
    {
    }

    QNBHierarchyItemPtr read(const PropertyListNode &dictionary, const QNBHierarchyItemPtr &parent)
    {
        QNBHierarchyItemPtr root = QNBHierarchyItem::newItem();
        root->setParent(parent);
        readItem(root, dictionary);
        while (!folders_.empty()) {
            Folder &folder = folders_.back();
            if (folder.next == folder.children.count()) {
                finish(*folder.item, folder.hasUid);
                folders_.pop_back();
                continue;
            }
            const PropertyListNode child = folder.children.at(folder.next++);
            if (!note(Key::children, child.isDictionary()))
                continue;
            QNBHierarchyItem::Children &siblings = folder.item->children_;
            siblings.push_back(QNBHierarchyItem::newItem());
            siblings.back()->parent_ = folder.item;
            readItem(siblings.back(), child);
        }
        return root;
    }

private:
    /// An item of whose children some are still to be read.
    struct Folder
    {
        QNBHierarchyItemPtr item;
        PropertyListNode children;
        qsizetype next;
        bool hasUid;
    };

    /// All but the children, which follow if there are any.
    void readItem(const QNBHierarchyItemPtr &pointer, const PropertyListNode &dictionary)
    {
        QNBHierarchyItem &item = *pointer;
        PropertyListNode children;
        bool hasUid = false;
        const qsizetype count = dictionary.isDictionary() ? dictionary.count() : 0;
        for (qsizetype i = 0; i < count; ++i) {
            const QString &key = dictionary.keyAt(i);
            const PropertyListNode value = dictionary.valueAt(i);
            if (key == Key::filename) {
                readString(key, value, item.filename_);
            } else if (key == Key::permissions) {
                readPermissions(value, item);
            } else if (key == Key::children) {
                if (note(key, value.isArray()))
                    children = value;
            } else if (key == Key::isFolder) {
                const std::optional<bool> isFolder = booleanOf(value);
                note(key, isFolder.has_value());
                item.isFolder_ = isFolder.value_or(false);
            } else if (key == Key::color) {
                readString(key, value, item.colorName_);
            } else if (key == Key::contentFilename) {
                readString(key, value, item.contentFilename_);
            } else if (key == Key::uid) {
                hasUid = note(key, value.isString());
                if (hasUid)
                    item.setUid(value.string());
            } else {
                note(key, false);
            }
        }
        const qsizetype childCount = children.isArray() ? children.count() : 0;
        if (childCount == 0) {
            finish(item, hasUid);
            return;
        }
        item.children_.reserve(static_cast<std::size_t>(childCount));
        folders_.push_back({pointer, children, 0, hasUid});
    }

    /// An identifier of its own depends on the number of children.
    void finish(QNBHierarchyItem &item, bool hasUid)
    {
        if (!hasUid)
            item.generateUID(&longNames_);
    }

    void readString(const QString &key, const PropertyListNode &value, QString &target)
    {
        target = note(key, value.isString()) ? value.string() : QString();
    }

    /// Exactly three characters, a digit each; anything else leaves the defaults, a character that is no
    /// digit reads as 0.
    void readPermissions(const PropertyListNode &value, QNBHierarchyItem &item)
    {
        if (!note(Key::permissions, value.isString()))
            return;
        const QString &digits = value.string();
        if (digits.size() != qsizetype(item.permissions_.size()))
            return;
        for (std::size_t i = 0; i < item.permissions_.size(); ++i) {
            const char16_t c = digits.at(qsizetype(i)).unicode();
            item.permissions_[i] = c >= u'0' && c <= u'9' ? c - u'0' : 0;
        }
    }

    /// Counts an entry that has no place in an item; passes \a isRight on.
    bool note(const QString &key, bool isRight)
    {
        if (!isRight && report_) {
            if (report_->losses++ == 0)
                report_->first = key;
        }
        return isRight;
    }

    QNBHierarchyItem::ReadReport *report_;
    /// From the root down; what is to be read is read into these and their children.
    std::vector<Folder> folders_;
    QNBHierarchyItem::LongNames longNames_;
};

namespace {

/// Takes the calls of a property-list writer and makes values of them.
class VariantSink
{
public:
    using Ref = QVariant;

    Ref boolean(bool value) const { return value; }
    Ref string(QStringView value) const { return value.toString(); }
    using ComingString = QStringView;
    ComingString coming(QStringView value) const { return value; }
    Ref array(std::span<const Ref> elements) const { return QVariantList(elements.begin(), elements.end()); }
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values) const
    {
        QVariantMap map;
        for (std::size_t i = 0; i < keys.size(); ++i)
            map.insert(keys[i].toString(), values[i]);
        return map;
    }
};

/// The entries of one dictionary on their way into a sink. What recurs in every item is added to the sink
/// once.
template <class Sink>
class ItemEntries
{
public:
    using Ref = typename Sink::Ref;

    explicit ItemEntries(Sink &sink)
        : sink_(sink)
    {
    }

    void add(const QString &key, Ref value)
    {
        keys_.push_back(sink_.string(key));
        values_.push_back(std::move(value));
    }
    void addText(const QString &key, const QString &text)
    {
        if (!text.isEmpty())
            add(key, sink_.string(text));
    }
    Ref take()
    {
        Ref result = sink_.dictionary(std::span<const Ref>(keys_.data(), std::size_t(keys_.size())),
                                      std::span<const Ref>(values_.data(), std::size_t(values_.size())));
        keys_.clear();
        values_.clear();
        return result;
    }

private:
    Sink &sink_;
    QVarLengthArray<Ref, 8> keys_;
    QVarLengthArray<Ref, 8> values_;
};

/// One after the other; a permission that means something has one digit.
QVarLengthArray<QChar, 3> permissionDigits(const std::array<std::uint32_t, 3> &permissions)
{
    QVarLengthArray<QChar, 3> digits;
    for (const std::uint32_t permission : permissions) {
        if (permission < 10)
            digits.append(QChar(static_cast<char16_t>(u'0' + permission)));
        else
            for (const QChar digit : QString::number(permission))
                digits.append(digit);
    }
    return digits;
}

} // namespace

/// The items of a tree that are still to be written, children before their parent. A large tree lies
/// scattered in memory, and waiting for it takes longer than the writing: each item is sent for while others
/// are written, then its name, then the place where the sink will look for the name.
template <class Sink>
class QNBHierarchyItem::PendingItems
{
public:
    /// What is written of an item, besides its name and its uid.
    struct Next
    {
        const QNBHierarchyItem &item;
        const QString &filename = item.filename_;
        const QString &colorName = item.colorName_;
        const QString &contentFilename = item.contentFilename_;
        const std::array<std::uint32_t, 3> &permissions = item.permissions_;
        bool hasPermissions = item.hasPermission_ != std::array<bool, 3>{false, false, false};
        bool isFolder = item.isFolder_;
        std::size_t childCount = item.children_.size();
    };

    PendingItems(Sink &sink, const QNBHierarchyItem &root, bool includeUID)
        : sink_(sink)
        , items_{{&root}}
        , includeUID_(includeUID)
    {
    }

    bool isEmpty() const { return items_.empty(); }

    /// The next item whose children, if any, have been taken.
    Next next()
    {
        while (!items_.back().isOpen) {
            items_.back().isOpen = true;
            const Children &children = items_.back().item->children_;
            for (auto child = children.crbegin(); child != children.crend(); ++child)
                items_.push_back({child->get()});
            for (std::size_t i = 0; i < std::min(children.size(), distance); ++i)
                fetch(*children[i]);
        }
        const std::size_t count = items_.size();
        if (count > distance)
            fetch(*items_[count - 1 - distance].item);
        if (count > 2)
            __builtin_prefetch(items_[count - 3].item->filename_.constData());
        const QNBHierarchyItem *item = items_.back().item;
        filename_ = item == following_ ? followingFilename_ : sink_.coming(item->filename_);
        following_ = count > 1 ? items_[count - 2].item : nullptr;
        if (following_)
            followingFilename_ = sink_.coming(following_->filename_);
        return {*item};
    }

    /// Of the item that next() returned last.
    const typename Sink::ComingString &filename() const { return filename_; }
    std::optional<QString> uid() const
    {
        return includeUID_ ? std::optional(items_.back().item->uid()) : std::nullopt;
    }

    void take() { items_.pop_back(); }

private:
    /// How many items before its turn an item is sent for.
    static constexpr std::size_t distance = 4;

    struct Pending
    {
        const QNBHierarchyItem *item;
        bool isOpen = false;
    };

    static void fetch(const QNBHierarchyItem &item)
    {
        constexpr std::size_t line = 64;
        for (std::size_t at = 0; at < sizeof item; at += line)
            __builtin_prefetch(reinterpret_cast<const char *>(&item) + at);
    }

    Sink &sink_;
    /// The next one is the last.
    std::vector<Pending> items_;
    const bool includeUID_;
    typename Sink::ComingString filename_;
    /// What comes next, unless it turns out to have children.
    const QNBHierarchyItem *following_ = nullptr;
    typename Sink::ComingString followingFilename_;
};

namespace {

/// Writes the items of a tree, which come children before their parent.
template <class Sink, class Items>
typename Sink::Ref encodeItems(Sink &sink, Items &&items)
{
    using Ref = typename Sink::Ref;
    // The finished items that still wait for their parent, in order.
    std::vector<Ref> finished;
    ItemEntries<Sink> entries(sink);
    for (;;) {
        const auto &item = items.next();
        if (!item.filename.isEmpty())
            entries.add(Key::filename, sink.string(items.filename()));
        if (item.isFolder)
            entries.add(Key::isFolder, sink.boolean(true));
        entries.addText(Key::color, item.colorName);
        entries.addText(Key::contentFilename, item.contentFilename);
        if (item.hasPermissions)
            entries.add(Key::permissions, sink.string(permissionDigits(item.permissions)));
        if (const std::optional<QString> uid = items.uid())
            entries.add(Key::uid, sink.string(*uid));
        if (item.childCount > 0) {
            const std::size_t first = finished.size() - item.childCount;
            entries.add(Key::children, sink.array(std::span<const Ref>(finished).subspan(first)));
            finished.resize(first);
        }
        items.take();
        Ref dictionary = entries.take();
        if (items.isEmpty())
            return dictionary;
        finished.push_back(std::move(dictionary));
    }
}

/// The items of a snapshot, in their order.
template <class Items>
class SnapshotItems
{
public:
    explicit SnapshotItems(const Items &items)
        : items_(items)
    {
    }

    bool isEmpty() const { return next_ == items_.size(); }
    const auto &next() const { return items_[next_]; }
    const QString &filename() const { return next().filename; }
    static std::optional<QString> uid() { return std::nullopt; }
    void take() { ++next_; }

private:
    const Items &items_;
    std::size_t next_ = 0;
};

/// For a walk on which nothing is written.
struct NoSink
{
    using ComingString = QStringView;
    static ComingString coming(const QString &value) { return value; }
};

} // namespace

QNBTreeSnapshot QNBHierarchyItem::snapshot() const
{
    NoSink sink;
    QNBTreeSnapshot snapshot;
    for (PendingItems pending(sink, *this, false); !pending.isEmpty(); pending.take()) {
        const auto item = pending.next();
        makeRoom(snapshot.items_, 1);
        snapshot.items_.push_back({item.filename, item.colorName, item.contentFilename, item.permissions,
                                   item.hasPermissions, item.isFolder,
                                   static_cast<std::uint32_t>(item.childCount)});
    }
    return snapshot;
}

BinaryPropertyListWriter::Ref QNBTreeSnapshot::encode(BinaryPropertyListWriter &writer) const
{
    return encodeItems(writer, SnapshotItems(items_));
}

QNBHierarchyItemPtr QNBHierarchyItem::initWithDictionary(const QVariantMap &dictionary,
                                                         const QNBHierarchyItemPtr &andParent)
{
    const PropertyListDocument::Ptr document = PropertyListDocument::fromVariant(dictionary);
    return initWithDictionary(document->root(), andParent);
}

QNBHierarchyItemPtr QNBHierarchyItem::initWithDictionary(const PropertyListNode &dictionary,
                                                         const QNBHierarchyItemPtr &andParent,
                                                         ReadReport *report)
{
    return QNBItemDictionaryReader(report).read(dictionary, andParent);
}

QVariantMap QNBHierarchyItem::itemDictionaryWithFilename(const QString &filename, bool isDirectory,
                                                         const QVariantList *children)
{
    QVariantMap dictionary;
    if (!filename.isEmpty())
        dictionary.insert(Key::filename, filename);
    if (children)
        dictionary.insert(Key::children, *children);
    if (isDirectory)
        dictionary.insert(Key::isFolder, true);
    return dictionary;
}

QVariantMap QNBHierarchyItem::toDictionaryWithUID(bool includeUID) const
{
    VariantSink sink;
    return encodeItems(sink, PendingItems(sink, *this, includeUID)).toMap();
}

BinaryPropertyListWriter::Ref QNBHierarchyItem::encode(BinaryPropertyListWriter &writer) const
{
    return encodeItems(writer, PendingItems(writer, *this, false));
}

KeyedArchiver::Ref QNBHierarchyItem::encode(KeyedArchiver &archiver, bool includeUID) const
{
    return encodeItems(archiver, PendingItems(archiver, *this, includeUID));
}
