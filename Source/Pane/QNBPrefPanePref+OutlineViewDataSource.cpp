// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/Files/PathExtension.h"
#include "Source/Controls/QNBHoverCell.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QPushButton>

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
    const QNBHierarchyItem *parent = itemOrRoot(item);
    return parent ? parent->childAtIndex(index) : nullptr;
}

QVariant QNBPrefPanePref::outlineViewObjectValueForTableColumn(OutlineView &, int, const OutlineItem &item)
{
    return item ? itemOrRoot(item)->filename() : QString();
}

bool QNBPrefPanePref::outlineViewShouldEditTableColumn(OutlineView &, int, const OutlineItem &)
{
    return true;
}

void QNBPrefPanePref::outlineViewWillDisplayCell(OutlineView &, ViewCell &cell, int, const OutlineItem &item)
{
    const QNBHierarchyItem *shown = itemOrRoot(item);
    const QIcon icon =
        shown->isDirectory() ? _icons.folderIcon() : _icons.iconForFileType(pathExtension(shown->filename()));
    const auto gel = QNBHoverCell::colorForGel(shown->colorName());
    cell.image = gel ? _icons.tintedIcon(icon, gel->first) : icon;
}

void QNBPrefPanePref::outlineViewSelectionDidChange(OutlineView &)
{
    updatePermissionCheckboxes();
    updateColorLabelButtons();
    validateHierarchyActions();
    updateAttributeActions();
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
    keepChildNamesOf(nullptr);

    _ui_presetHierarchyView->reloadData();
    fullyExpandHierarchy();
    showEmptyState();
    showDescription();
    showScript();
    for (QPushButton *control : {_removePresetButton, _scriptButton})
        control->setEnabled(_selectedItem != nullptr);
    validateHierarchyActions();
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
