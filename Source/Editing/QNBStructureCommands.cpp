// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBStructureCommands.h"

#include <utility>

namespace {

/// What the eye looks for where an item was: what stands before that place, else the folder.
QNBHierarchyItemPtr nearest(const QNBHierarchyItemPtr &siblingBefore, const QNBHierarchyItemPtr &parent)
{
    if (siblingBefore)
        return siblingBefore;
    return parent->numberOfChildren() > 0 ? parent->childAtIndex(0) : parent;
}

} // namespace

QNBInsertItemCommand::QNBInsertItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset,
                                           QNBHierarchyItemPtr item, QNBHierarchyItemPtr parent,
                                           QNBHierarchyItemPtr afterSibling, const QString &text)
    : QNBEditCommand(observer, std::move(preset), text)
    , item_(std::move(item))
    , parent_(std::move(parent))
    , afterSibling_(std::move(afterSibling))
{
}

QNBHierarchyItemPtr QNBInsertItemCommand::itemAfterReverting() const
{
    return nearest(afterSibling_, parent_);
}

QNBRemoveItemCommand::QNBRemoveItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset,
                                           QNBHierarchyItemPtr item, QNBHierarchyItemPtr parent,
                                           const QString &text)
    : QNBEditCommand(observer, std::move(preset), text)
    , item_(std::move(item))
    , parent_(std::move(parent))
    , siblingBefore_(siblingBefore(*item_, *parent_))
{
}

void QNBRemoveItemCommand::apply()
{
    expansion_ = observer().expansionOf(item_);
    remove(item_, parent_);
}

void QNBRemoveItemCommand::revert()
{
    insert(item_, parent_, siblingBefore_);
    observer().setExpansionOf(item_, expansion_);
}

QNBHierarchyItemPtr QNBRemoveItemCommand::itemAfterApplying() const
{
    return nearest(siblingBefore_, parent_);
}

QNBMoveItemCommand::QNBMoveItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset,
                                       QNBHierarchyItemPtr item, QNBHierarchyItemPtr parent,
                                       QNBHierarchyItemPtr copy, Place to, const QString &text)
    : QNBEditCommand(observer, std::move(preset), text)
    , item_(std::move(item))
    , parent_(std::move(parent))
    , copy_(std::move(copy))
    , to_(std::move(to))
{
}

void QNBMoveItemCommand::apply()
{
    const QNBEditObserver::Expansion expansion = observer().expansionOf(item_);
    observer().changesWillBegin();
    insert(copy_, to_.parent, to_.afterSibling);
    observer().setExpansionOf(copy_, expansion);
    siblingBefore_ = siblingBefore(*item_, *parent_);
    remove(item_, parent_);
    observer().changesDidEnd();
}

void QNBMoveItemCommand::revert()
{
    const QNBEditObserver::Expansion expansion = observer().expansionOf(copy_);
    observer().changesWillBegin();
    insert(item_, parent_, siblingBefore_);
    observer().setExpansionOf(item_, expansion);
    remove(copy_, to_.parent);
    observer().changesDidEnd();
}
