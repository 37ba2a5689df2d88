// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QPlainTextEdit>

void QNBPrefPanePref::setUpHistory()
{
    const auto connectStep = [this](QAction *action, void (QNBPrefPanePref::*step)()) {
        // Where there are presets to be seen; not on the other tabs.
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        _presetsTab->addAction(action);
        action->setEnabled(false);
        connect(action, &QAction::triggered, this, step);
    };
    connectStep(_undoAction, &QNBPrefPanePref::undo);
    connectStep(_redoAction, &QNBPrefPanePref::redo);
    connect(&_history, &QUndoStack::canUndoChanged, _undoAction, &QAction::setEnabled);
    connect(&_history, &QUndoStack::canRedoChanged, _redoAction, &QAction::setEnabled);
    connect(&_history, &QUndoStack::undoTextChanged, this, [this](const QString &step) {
        _undoAction->setText(step.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(step));
    });
    connect(&_history, &QUndoStack::redoTextChanged, this, [this](const QString &step) {
        _redoAction->setText(step.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(step));
    });
    connect(_ui_presetListController, &ArrayController::objectChanged, this,
            &QNBPrefPanePref::presetValueDidChange);

    connect(&_history, &QUndoStack::indexChanged, &_unsavedState, &QNBUnsavedState::wasEdited);

    // The description's typing is part of the one history.
    _ui_presetDescription->setUndoRedoEnabled(false);
    _ui_presetDescription->installEventFilter(this);
}

void QNBPrefPanePref::undo()
{
    endEditing();
    _history.undo();
}

void QNBPrefPanePref::redo()
{
    endEditing();
    _history.redo();
}

void QNBPrefPanePref::presetWillBeEditedAgain(const QNBPresetRecordPtr &preset)
{
    _ui_presetListController->setSelectionIndex(
        static_cast<int>(_ui_presetListController->arrangedObjects().indexOf(preset)));
}

void QNBPrefPanePref::changesWillBegin()
{
    _ui_presetHierarchyView->beginUpdates();
}

void QNBPrefPanePref::changesDidEnd()
{
    _ui_presetHierarchyView->endUpdates();
}

void QNBPrefPanePref::childWasInserted(const QNBHierarchyItemPtr &parent, std::size_t index)
{
    _ui_presetHierarchyView->insertItemAtIndex(static_cast<int>(index), outlineItem(parent));
    showEmptyState();
}

void QNBPrefPanePref::childWasRemoved(const QNBHierarchyItemPtr &parent, std::size_t index)
{
    _ui_presetHierarchyView->removeItemAtIndex(static_cast<int>(index), outlineItem(parent));
    showEmptyState();
}

void QNBPrefPanePref::itemsDidChange(const QNBHierarchyItem::Children &items)
{
    _ui_presetHierarchyView->reloadItems({items.begin(), items.end()});
}

QNBEditObserver::Expansion QNBPrefPanePref::expansionOf(const QNBHierarchyItemPtr &item) const
{
    return _ui_presetHierarchyView->expansionOf(item);
}

void QNBPrefPanePref::setExpansionOf(const QNBHierarchyItemPtr &item, const Expansion &expansion)
{
    _ui_presetHierarchyView->setExpansionOf(item, outlineItem(item->parent()), expansion);
}

void QNBPrefPanePref::itemWasEditedAgain(const QNBHierarchyItemPtr &item)
{
    revealItem(item);
    // The item may have been selected all along.
    outlineViewSelectionDidChange(*_ui_presetHierarchyView);
}

OutlineItem QNBPrefPanePref::outlineItem(const QNBHierarchyItemPtr &item) const
{
    return item == _rootPresetHierarchyItem ? OutlineItem() : item;
}

void QNBPrefPanePref::revealItem(const QNBHierarchyItemPtr &item)
{
    if (!outlineItem(item))
        return;
    QNBHierarchyItem::Children ancestors;
    for (QNBHierarchyItemPtr parent = item->parent(); outlineItem(parent); parent = parent->parent())
        ancestors.push_back(parent);
    for (auto ancestor = ancestors.crbegin(); ancestor != ancestors.crend(); ++ancestor)
        _ui_presetHierarchyView->expandItem(*ancestor);
    _ui_presetHierarchyView->selectRow(_ui_presetHierarchyView->rowForItem(item));
}

void QNBPrefPanePref::presetValueDidChange(int index, const QString &key)
{
    if (index != _ui_presetListController->selectionIndex())
        return;
    if (key == QNBPresetKey::scriptFile)
        showScript();
    // Not while it is being typed, which would move the cursor.
    if (key == QNBPresetKey::presetDescription &&
        descriptionText() != _selectedItem->valueForKey(key).toString())
        showDescription();
}
