// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <cstdint>
#include <optional>
#include <vector>

/// An item of a preset's tree on its way to another place in it, as a drag carries it: a keyed archive of the
/// item's dictionary, identifiers included, and of where the item stood.
///
/// Nothing is promised about the bytes that come back: they may be of another preset, of a tree that has
/// changed since, or no archive at all.
class QNBDraggedItem
{
public:
    /// The one type under which the archive goes to the pasteboard.
    inline static const QString pasteboardType = QStringLiteral("QNBHierarchyItemDragType");

    static PropertyList::WriteResult archive(const QNBHierarchyItem &item);
    /// None, with the reason in \a error, for what archive() cannot have written.
    static std::optional<QNBDraggedItem> unarchive(const QByteArray &bytes, QString *error);

    /// A new item with the identifiers of the one that is dragged; the same in every call.
    const QNBHierarchyItemPtr &item() const { return item_; }
    /// How many levels there are below it.
    int depthBelow() const { return depthBelow_; }

    /// The item that is dragged: what stands where it stood, in the tree of \a root, if that is the same item
    /// by its identifier. Else null.
    QNBHierarchyItemPtr source(const QNBHierarchyItemPtr &root) const;
    /// Whether \a source is as it was when the drag began, with all below it. Then item() takes over the
    /// permissions, too: not all that an item can have survive in a dictionary.
    bool becomeCopyOf(const QNBHierarchyItem &source);

    /// Where an item stands: its index among its siblings, its parent's index, and so on up to the child of
    /// the root.
    static std::vector<std::int32_t> indexPath(const QNBHierarchyItem &item);
    /// Null if there is no item.
    static QNBHierarchyItemPtr itemAtIndexPath(const QNBHierarchyItemPtr &root,
                                               const std::vector<std::int32_t> &indexPath);

private:
    QNBDraggedItem() = default;

    QNBHierarchyItemPtr item_;
    std::vector<std::int32_t> indexPath_;
    int depthBelow_ = 0;
};
