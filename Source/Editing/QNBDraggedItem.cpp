// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBDraggedItem.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Source/Model/QNBHierarchyDepth.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

const QString itemKey = QStringLiteral("item");
const QString indexPathKey = QStringLiteral("indexPath");

std::optional<std::vector<std::int32_t>> readIndexPath(const PropertyListNode &array)
{
    if (!array.isArray() || array.count() == 0 || array.count() > QNBHierarchyDepth::deepest)
        return std::nullopt;
    std::vector<std::int32_t> path;
    path.reserve(static_cast<std::size_t>(array.count()));
    for (qsizetype i = 0; i < array.count(); ++i) {
        const PropertyListNode number = array.at(i);
        if (number.type() != PropertyListType::Integer)
            return std::nullopt;
        bool isRead = false;
        const qlonglong index = number.toVariant().toLongLong(&isRead);
        if (!isRead || index < 0 || index > std::numeric_limits<std::int32_t>::max())
            return std::nullopt;
        path.push_back(static_cast<std::int32_t>(index));
    }
    return path;
}

bool haveSameAttributes(const QNBHierarchyItem &a, const QNBHierarchyItem &b)
{
    return a.isEqualTo(b) && a.isDirectory() == b.isDirectory() && a.filename() == b.filename() &&
           a.colorName() == b.colorName() && a.contentFilename() == b.contentFilename() &&
           a.numberOfChildren() == b.numberOfChildren();
}

} // namespace

PropertyList::WriteResult QNBDraggedItem::archive(const QNBHierarchyItem &item)
{
    KeyedArchiver archiver;
    std::vector<KeyedArchiver::Ref> indices;
    for (const std::int32_t index : indexPath(item))
        indices.push_back(archiver.integer(index));
    const std::array keys{archiver.string(itemKey), archiver.string(indexPathKey)};
    const std::array values{item.encode(archiver, true), archiver.array(indices)};
    return archiver.finish(archiver.dictionary(keys, values));
}

std::optional<QNBDraggedItem> QNBDraggedItem::unarchive(const QByteArray &bytes, QString *error)
{
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(bytes, error);
    if (!document)
        return std::nullopt;
    const PropertyListNode item = document->root().value(itemKey);
    std::optional<std::vector<std::int32_t>> path = readIndexPath(document->root().value(indexPathKey));
    if (!item.isDictionary() || !path) {
        *error = QStringLiteral("the archive holds no item and its place");
        return std::nullopt;
    }
    QNBDraggedItem dragged;
    dragged.item_ = QNBHierarchyItem::initWithDictionary(item);
    dragged.indexPath_ = *std::move(path);
    dragged.depthBelow_ = QNBHierarchyDepth::belowItem(*dragged.item_);
    return dragged;
}

QNBHierarchyItemPtr QNBDraggedItem::source(const QNBHierarchyItemPtr &root) const
{
    QNBHierarchyItemPtr source = itemAtIndexPath(root, indexPath_);
    return source && source->isEqualTo(*item_) ? source : nullptr;
}

bool QNBDraggedItem::becomeCopyOf(const QNBHierarchyItem &source)
{
    std::vector<std::pair<const QNBHierarchyItem *, QNBHierarchyItem *>> pending{{&source, item_.get()}};
    while (!pending.empty()) {
        const auto [original, copy] = pending.back();
        pending.pop_back();
        if (!haveSameAttributes(*original, *copy))
            return false;
        copy->setCustomPermissions(original->customPermissions());
        for (std::size_t i = 0; i < original->numberOfChildren(); ++i)
            pending.emplace_back(original->children()[i].get(), copy->children()[i].get());
    }
    return true;
}

std::vector<std::int32_t> QNBDraggedItem::indexPath(const QNBHierarchyItem &item)
{
    std::vector<std::int32_t> path;
    const QNBHierarchyItem *child = &item;
    for (QNBHierarchyItemPtr parent = item.parent(); parent; parent = parent->parent()) {
        path.push_back(static_cast<std::int32_t>(parent->indexOfChild(child)));
        child = parent.get();
    }
    return path;
}

QNBHierarchyItemPtr QNBDraggedItem::itemAtIndexPath(const QNBHierarchyItemPtr &root,
                                                    const std::vector<std::int32_t> &indexPath)
{
    QNBHierarchyItemPtr item = root;
    for (auto index = indexPath.crbegin(); item && index != indexPath.crend(); ++index)
        item = item->childAtIndex(*index);
    return item;
}
