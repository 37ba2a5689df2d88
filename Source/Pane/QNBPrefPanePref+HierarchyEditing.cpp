// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Editing/QNBAttributeCommands.h"
#include "Source/Editing/QNBStructureCommands.h"
#include "Source/Model/QNBHierarchyDepth.h"
#include "Source/Model/QNBUniqueName.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/OutlineView.h"

namespace {

const QString untitled = QStringLiteral("Untitled");

} // namespace

void QNBPrefPanePref::addFileToPresetHierarchy()
{
    insertItemInPresetHierarchy(false);
}

void QNBPrefPanePref::addDirectoryToPresetHierarchy()
{
    insertItemInPresetHierarchy(true);
}

void QNBPrefPanePref::insertItemInPresetHierarchy(bool isDirectory)
{
    endEditing();
    if (!_selectedItem)
        return;
    if (!canInsertItem()) {
        qCWarning(lcPane) << "no item can be added that deep:" << QNBHierarchyDepth::deepest << "levels";
        return;
    }
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename({}, isDirectory, nullptr));
    const QNBHierarchyItemPtr selected = selectedHierarchyItem();
    const QNBHierarchyItemPtr level = levelForNewItem();
    const bool isIntoSelected = level == selected;
    item->setFilename(uniqueNameForLevel(*level, untitled, item.get()));
    const QNBHierarchyItemPtr lastChild =
        level->numberOfChildren() > 0 ? level->children().back() : QNBHierarchyItemPtr();
    _history.push(new QNBInsertItemCommand(*this, _selectedItem, item, level,
                                           isIntoSelected ? lastChild : selected,
                                           isDirectory ? tr("New Folder") : tr("New File")));
    if (isIntoSelected)
        _ui_presetHierarchyView->expandItem(selected);
    const int row = _ui_presetHierarchyView->rowForItem(item);
    _ui_presetHierarchyView->selectRow(row);
    _ui_presetHierarchyView->editRow(row);
}

QNBHierarchyItemPtr QNBPrefPanePref::levelForNewItem() const
{
    const QNBHierarchyItemPtr selected = selectedHierarchyItem();
    if (!selected)
        return _rootPresetHierarchyItem;
    if (selected->isDirectory())
        return selected;
    const QNBHierarchyItemPtr parent = selected->parent();
    return parent ? parent : _rootPresetHierarchyItem;
}

bool QNBPrefPanePref::canInsertItem() const
{
    return _selectedItem && QNBHierarchyDepth::ofItem(*levelForNewItem()) < QNBHierarchyDepth::deepest;
}

void QNBPrefPanePref::keepChildNamesOf(const QNBHierarchyItemPtr &level)
{
    if (const QNBHierarchyItemPtr former = _levelWithChildNames.lock(); former && former != level)
        former->dropChildNames();
    if (level)
        level->indexChildNames();
    _levelWithChildNames = level;
}

void QNBPrefPanePref::renameSelectedItemInPresetHierarchy()
{
    _ui_presetHierarchyView->editRow(_ui_presetHierarchyView->selectedRow());
}

void QNBPrefPanePref::outlineViewSetObjectValue(OutlineView &, const QVariant &value, int,
                                                const OutlineItem &outlineItem)
{
    const auto item = std::static_pointer_cast<QNBHierarchyItem>(outlineItem);
    const QNBHierarchyItemPtr level = item ? item->parent() : nullptr;
    if (!level || !_selectedItem)
        return;
    const QString text = value.toString();
    keepChildNamesOf(level);
    const QString name = uniqueNameForFilename(text.isEmpty() ? untitled : text, *level, item.get());
    if (name != item->filename())
        _history.push(new QNBSetItemTextCommand(*this, _selectedItem, item, QNBSetItemTextCommand::filename,
                                                name, tr("Rename")));
}

void QNBPrefPanePref::deleteSelectedItemInPresetHierarchy()
{
    endEditing();
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (item)
        _history.push(new QNBRemoveItemCommand(*this, _selectedItem, item, item->parent(), tr("Delete")));
}

void QNBPrefPanePref::outlineViewDeleteRowRequested(OutlineView &outlineView, int row)
{
    if (row == outlineView.selectedRow())
        deleteSelectedItemInPresetHierarchy();
}
