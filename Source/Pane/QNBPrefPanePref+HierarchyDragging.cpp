// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Editing/QNBStructureCommands.h"
#include "Source/Model/QNBHierarchyDepth.h"
#include "Source/Model/QNBUniqueName.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/OutlineView.h"

#include <QMimeData>
#include <utility>

namespace {

bool fits(const QNBDraggedItem &dragged, const QNBHierarchyItem &folder)
{
    return QNBHierarchyDepth::ofItem(folder) + 1 + dragged.depthBelow() <= QNBHierarchyDepth::deepest;
}

/// Whether \a folder stands in the tree of \a root, outside of \a item.
bool isOutside(const QNBHierarchyItemPtr &folder, const QNBHierarchyItemPtr &item,
               const QNBHierarchyItemPtr &root)
{
    for (QNBHierarchyItemPtr inner = folder; inner != root;) {
        const QNBHierarchyItemPtr outer = inner->parent();
        // What was removed still knows its parent.
        if (inner == item || !outer || outer->indexOfChild(inner.get()) == QNBHierarchyItem::notFound)
            return false;
        inner = outer;
    }
    return true;
}

} // namespace

bool QNBPrefPanePref::outlineViewWriteItemsToPasteboard(OutlineView &, const QList<OutlineItem> &items,
                                                        Pasteboard &pasteboard)
{
    if (items.isEmpty())
        return false;
    const auto item = std::static_pointer_cast<QNBHierarchyItem>(items.constFirst());
    const PropertyList::WriteResult archive = QNBDraggedItem::archive(*item);
    if (!archive) {
        qCWarning(lcPane) << item->description() << "cannot be dragged:" << archive.error;
        return false;
    }
    pasteboard.declareTypes({QNBDraggedItem::pasteboardType});
    pasteboard.setDataForType(*archive.bytes, QNBDraggedItem::pasteboardType);
    return true;
}

const QNBDraggedItem *QNBPrefPanePref::draggedItem(const Pasteboard &pasteboard)
{
    // Where an item stood says nothing about the trees of another process.
    if (!pasteboard.isFromThisProcess() || !pasteboard.hasDataForType(QNBDraggedItem::pasteboardType))
        return nullptr;
    const QByteArray data = pasteboard.dataForType(QNBDraggedItem::pasteboardType);
    if (_draggedData.isNull() || data != _draggedData) {
        QString error;
        _draggedItem = QNBDraggedItem::unarchive(data, &error);
        _draggedData = data;
        if (!_draggedItem)
            qCWarning(lcPane) << "what is dragged is no item:" << error;
    }
    return _draggedItem ? &*_draggedItem : nullptr;
}

DragOperations QNBPrefPanePref::outlineViewValidateDrop(OutlineView &, const DraggingInfo &draggingInfo,
                                                        const OutlineItem &proposedItem, int)
{
    const auto folder = std::static_pointer_cast<QNBHierarchyItem>(proposedItem);
    if (folder && !folder->isDirectory())
        return DragOperation::None;
    const QNBDraggedItem *dragged = draggedItem(draggingInfo.draggingPasteboard());
    if (!dragged)
        return DragOperation::None;
    if (folder && (dragged->item()->isEqualTo(*folder) || dragged->item()->hasChild(*folder)))
        return DragOperation::None;
    if (!dragged->source(_rootPresetHierarchyItem) ||
        !fits(*dragged, folder ? *folder : *_rootPresetHierarchyItem))
        return DragOperation::None;
    return DragOperation::Every;
}

bool QNBPrefPanePref::outlineViewAcceptDrop(OutlineView &, const DraggingInfo &draggingInfo,
                                            const OutlineItem &item, int childIndex)
{
    if (!draggedItem(draggingInfo.draggingPasteboard()))
        return false;
    // Its item goes into the tree: another drop of the same data has to read it anew.
    QNBDraggedItem dragged = *std::exchange(_draggedItem, std::nullopt);
    _draggedData.clear();
    const QNBHierarchyItemPtr copy = dragged.item();

    const QNBHierarchyItemPtr source = dragged.source(_rootPresetHierarchyItem);
    if (!source || !dragged.becomeCopyOf(*source)) {
        qCWarning(lcPane) << copy->description() << "is not moved: it is not what stands there now";
        return false;
    }
    const QNBHierarchyItemPtr target =
        item ? std::static_pointer_cast<QNBHierarchyItem>(item) : _rootPresetHierarchyItem;
    const bool canHold = !item || target->isDirectory();
    if (!canHold || !isOutside(target, source, _rootPresetHierarchyItem) || !fits(dragged, *target)) {
        qCWarning(lcPane) << source->description() << "cannot go into" << target->description();
        return false;
    }
    // Where the user saw it, before the item leaves its old place.
    const QNBHierarchyItemPtr anchor = childIndex >= 1 ? target->childAtIndex(childIndex - 1) : nullptr;
    copy->setFilename(uniqueNameForFilename(copy->filename(), *target, copy.get()));

    const QNBHierarchyItemPtr parent = source->parent();
    const std::size_t place = parent->indexOfChild(source.get());
    const QNBHierarchyItemPtr before = place > 0 ? parent->children()[place - 1] : nullptr;
    const bool isMoved =
        parent != target || (anchor != source && anchor != before) || copy->filename() != source->filename();
    if (isMoved)
        _history.push(new QNBMoveItemCommand(*this, _selectedItem, source, parent, copy,
                                             {.parent = target, .afterSibling = anchor}, tr("Move")));
    _ui_presetHierarchyView->expandItem(item);
    revealItem(isMoved ? copy : source);
    return true;
}

void QNBPrefPanePref::moveSelectedItemInPresetHierarchy(QNBItemStep step)
{
    endEditing();
    if (!canMoveSelectedItem(step))
        return;
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    const QNBDropPlace place = *QNBPlaceForStep(*item, step);

    QMimeData data;
    Pasteboard pasteboard(data);
    OutlineView &view = *_ui_presetHierarchyView;
    if (!outlineViewWriteItemsToPasteboard(view, {item}, pasteboard))
        return;
    const DraggingInfo drag(data, DragOperation::Move);
    const OutlineItem target = outlineItem(place.parent);
    if (outlineViewValidateDrop(view, drag, target, place.childIndex) != DragOperation::None)
        outlineViewAcceptDrop(view, drag, target, place.childIndex);
}

bool QNBPrefPanePref::canMoveSelectedItem(QNBItemStep step) const
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    const std::optional<QNBDropPlace> place = item ? QNBPlaceForStep(*item, step) : std::nullopt;
    if (!place)
        return false;
    return step != QNBItemStep::IntoFolderAbove ||
           QNBHierarchyDepth::ofItem(*place->parent) + 1 + QNBHierarchyDepth::belowItem(*item) <=
               QNBHierarchyDepth::deepest;
}
