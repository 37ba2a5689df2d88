// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBEditCommand.h"

#include <utility>

QNBEditCommand::QNBEditCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, const QString &text)
    : QUndoCommand(text)
    , observer_(observer)
    , preset_(std::move(preset))
{
}

void QNBEditCommand::undo()
{
    observer_.presetWillBeEditedAgain(preset_);
    revert();
    observer_.itemWasEditedAgain(itemAfterReverting());
}

void QNBEditCommand::redo()
{
    // The first time, the action that made the command knows what to show.
    if (!std::exchange(wasMade_, true)) {
        apply();
        return;
    }
    observer_.presetWillBeEditedAgain(preset_);
    apply();
    observer_.itemWasEditedAgain(itemAfterApplying());
}

void QNBEditCommand::insert(const QNBHierarchyItemPtr &item, const QNBHierarchyItemPtr &parent,
                            const QNBHierarchyItemPtr &afterSibling) const
{
    const std::size_t before = parent->indexOfChild(afterSibling.get());
    parent->addChildAfterExistingChild(item, afterSibling);
    observer_.childWasInserted(parent, before == QNBHierarchyItem::notFound ? 0 : before + 1);
}

void QNBEditCommand::remove(const QNBHierarchyItemPtr &item, const QNBHierarchyItemPtr &parent) const
{
    const std::size_t index = parent->indexOfChild(item.get());
    parent->removeChild(item);
    observer_.childWasRemoved(parent, index);
}

QNBHierarchyItemPtr QNBEditCommand::siblingBefore(const QNBHierarchyItem &item,
                                                  const QNBHierarchyItem &parent)
{
    const std::size_t index = parent.indexOfChild(&item);
    return index == QNBHierarchyItem::notFound || index == 0 ? nullptr : parent.children()[index - 1];
}
