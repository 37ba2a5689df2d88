// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QPushButton>
#include <QStyle>

int QNBPrefPanePref::outlineViewNumberOfChildrenOfItem(OutlineView &, const OutlineItem &item)
{
    const QNBHierarchyItem *parent = itemOrRoot(item);
    return parent ? static_cast<int>(parent->numberOfChildren()) : 0;
}

bool QNBPrefPanePref::outlineViewIsItemExpandable(OutlineView &, const OutlineItem &item)
{
    if (!item)
        return true;
    const QNBHierarchyItem *parent = itemOrRoot(item);
    return parent->isDirectory() && parent->numberOfChildren() > 0;
}

OutlineItem QNBPrefPanePref::outlineViewChildOfItem(OutlineView &, int index, const OutlineItem &item)
{
    return itemOrRoot(item)->childAtIndex(index);
}

QVariant QNBPrefPanePref::outlineViewObjectValueForTableColumn(OutlineView &, int, const OutlineItem &item)
{
    return item ? itemOrRoot(item)->filename() : QString();
}

void QNBPrefPanePref::outlineViewWillDisplayCell(OutlineView &outlineView, ViewCell &cell, int,
                                                 const OutlineItem &item)
{
    const bool isDirectory = itemOrRoot(item)->isDirectory();
    QIcon &icon = isDirectory ? _folderIcon : _fileIcon;
    if (icon.isNull())
        icon = outlineView.style()->standardIcon(isDirectory ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
    cell.image = icon;
}

void QNBPrefPanePref::outlineViewSelectionDidChange(OutlineView &)
{
    updatePermissionCheckboxes();
    updateColorLabelButtons();
}

void QNBPrefPanePref::observeValueForKeyPath(const QString &)
{
    updateSelectionShadow();
}

void QNBPrefPanePref::updateSelectionShadow()
{
    const QList<ArrayController::Object> selected = _ui_presetListController->selectedObjects();
    _selectedItem =
        selected.isEmpty() ? nullptr : std::static_pointer_cast<QNBPresetRecord>(selected.constFirst());
    if (_selectedItem && !_selectedItem->fileHierarchy())
        _selectedItem->setFileHierarchy(QNBHierarchyItem::init());
    _rootPresetHierarchyItem = _selectedItem ? _selectedItem->fileHierarchy() : nullptr;

    _ui_presetHierarchyView->reloadData();
    fullyExpandHierarchy();
    showEmptyState();
    showDescription();
    for (QPushButton *control : {_removePresetButton, _addFileButton, _addFolderButton, _scriptButton})
        control->setEnabled(_selectedItem != nullptr);
}

void QNBPrefPanePref::showEmptyState()
{
    const QString emptyText = _selectedItem ? tr("This preset is empty") : tr("No preset selected");
    const bool isEmpty = !_rootPresetHierarchyItem || _rootPresetHierarchyItem->numberOfChildren() == 0;
    _ui_presetHierarchyView->setPlaceholderText(emptyText);
    _ui_presetHierarchyView->setAccessibleDescription(isEmpty ? emptyText : QString());
}

void QNBPrefPanePref::fullyExpandHierarchy()
{
    if (!_rootPresetHierarchyItem)
        return;
    for (const QNBHierarchyItemPtr &child : _rootPresetHierarchyItem->children())
        _ui_presetHierarchyView->expandItem(child, true);
}

QNBHierarchyItemPtr QNBPrefPanePref::selectedHierarchyItem() const
{
    return std::static_pointer_cast<QNBHierarchyItem>(
        _ui_presetHierarchyView->itemAtRow(_ui_presetHierarchyView->selectedRow()));
}

const QNBHierarchyItem *QNBPrefPanePref::itemOrRoot(const OutlineItem &item) const
{
    return item ? static_cast<const QNBHierarchyItem *>(item.get()) : _rootPresetHierarchyItem.get();
}
