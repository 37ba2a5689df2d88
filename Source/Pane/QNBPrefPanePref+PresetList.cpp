// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/LineText.h"
#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Model/QNBUniqueName.h"
#include "Source/Pane/QNBPresetListNames.h"
#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>

namespace {

/// A bit wider than the image.
constexpr int dragHandleColumnWidth = 24;

} // namespace

void QNBPrefPanePref::makePresetList()
{
    const QList<ArrayController::Object> records(_presets.begin(), _presets.end());
    _ui_presetListController->setContent(records);
    _sharedLabels.observe(*_ui_presetListController);
    _ui_presetListView->setColumns(
        {{.identifier = QNBDragHandleColumn,
          .width = dragHandleColumnWidth,
          .accessibleName = tr("Drag handle of %1")},
         {.identifier = QNBPresetKey::label, .key = QNBPresetKey::label, .isEditable = true}});
    _ui_presetListView->setDelegate(this);
    _ui_presetListView->setController(_ui_presetListController);
    _ui_presetListView->setDraggingSourceOperationMask(DragOperation::Copy, false);
    _ui_presetListView->registerForDraggedTypes({PasteboardType::filenames, QNBRowIndexDragType});
    _presetActionsButton->setMenu(_presetActionsMenu);
    _exchangeFolder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    setUpPresetActions();

    connect(_addPresetButton, &QPushButton::clicked, this, &QNBPrefPanePref::addPreset);
    connect(_removePresetButton, &QPushButton::clicked, this,
            &QNBPrefPanePref::removeSelectedPresetAfterConfirmation);
    _ui_presetListView->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(_ui_presetListView, &QWidget::customContextMenuRequested, this, [this](const QPoint &point) {
        if (const QModelIndex clicked = _ui_presetListView->indexAt(point); clicked.isValid())
            _ui_presetListController->setSelectionIndex(clicked.row());
        _presetActionsMenu->popup(_ui_presetListView->viewport()->mapToGlobal(point));
    });
}

void QNBPrefPanePref::setUpPresetActions()
{
    const auto connectAction = [this](QWidget &reach, QAction *action, void (QNBPrefPanePref::*act)()) {
        // The interface description says whether a shortcut works in all of that widget.
        reach.addAction(action);
        connect(action, &QAction::triggered, this, act);
    };
    connectAction(*_presetsTab, _addPresetAction, &QNBPrefPanePref::addPreset);
    connectAction(*_presetsTab, _importPresetsAction, &QNBPrefPanePref::importPresetsFromFiles);
    connectAction(*_presetsTab, _exportPresetAction, &QNBPrefPanePref::exportSelectedPreset);
    connectAction(*_presetsTab, _restoreEarlierStateAction, &QNBPrefPanePref::restoreEarlierState);
    connectAction(*_ui_presetListView, _renamePresetAction, &QNBPrefPanePref::renameSelectedPreset);
    connectAction(*_ui_presetListView, _removePresetAction,
                  &QNBPrefPanePref::removeSelectedPresetAfterConfirmation);
    connectAction(*_ui_presetListView, _movePresetUpAction, &QNBPrefPanePref::moveSelectedPresetUp);
    connectAction(*_ui_presetListView, _movePresetDownAction, &QNBPrefPanePref::moveSelectedPresetDown);

    connect(_defaultPresetsMenu, &QMenu::aboutToShow, this, &QNBPrefPanePref::showDefaultPresets);

    for (const auto change : {&ArrayController::objectInserted, &ArrayController::objectRemoved})
        connect(_ui_presetListController, change, this, &QNBPrefPanePref::presetListDidChange);
    connect(_ui_presetListController, &ArrayController::selectionChanged, this,
            &QNBPrefPanePref::presetListDidChange);
    presetListDidChange();
}

void QNBPrefPanePref::presetListDidChange()
{
    const qsizetype count = _ui_presetListController->arrangedObjects().size();
    const int selected = _ui_presetListController->selectionIndex();
    const bool isSelected = selected != ArrayController::noIndex;
    for (QAction *action : {_renamePresetAction, _removePresetAction, _exportPresetAction})
        action->setEnabled(isSelected);
    _movePresetUpAction->setEnabled(isSelected && selected > 0);
    _movePresetDownAction->setEnabled(isSelected && selected + 1 < count);

    const QString emptyText = tr("No presets");
    _ui_presetListView->setPlaceholderText(emptyText);
    _ui_presetListView->setAccessibleDescription(count == 0 ? emptyText : QString());
}

void QNBPrefPanePref::addPreset()
{
    // What is being typed may be the name that the new preset would get.
    endEditing();
    const auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(uniqueLabel(tr("Untitled Preset")), QNBPresetKey::label);
    _history.push(new QNBInsertPresetsCommand(
        *_ui_presetListController, {record},
        static_cast<int>(_ui_presetListController->arrangedObjects().size()), tr("New Preset")));
    renameSelectedPreset();
}

QList<QNBPresetRecordPtr> QNBPrefPanePref::shownPresets() const
{
    QList<QNBPresetRecordPtr> presets;
    presets.reserve(_ui_presetListController->arrangedObjects().size());
    for (const ArrayController::Object &object : _ui_presetListController->arrangedObjects())
        presets.append(std::static_pointer_cast<QNBPresetRecord>(object));
    return presets;
}

void QNBPrefPanePref::restoreEarlierState()
{
    endEditing();
    const QPointer<QObject> self(this);
    const QNBEarlierStatesDialog::Runner choose = _services.chooseEarlierState;
    const std::optional<QNBEarlierState> chosen =
        choose(_mainView, QNBEarlierStates::all(*_services.preferences), shownPresets());
    // The pane may have been left for good before the choice.
    if (!self || !chosen)
        return;
    _history.push(new QNBReplacePresetsCommand(*_ui_presetListController, chosen->presets,
                                               tr("Restore an Earlier State")));
    // Who has chosen knows of it.
    if (_listener)
        _listener->takeBackNotice(PaneNotice::Kind::Replaced);
    _ui_presetListView->setFocus();
}

QString QNBPrefPanePref::uniqueLabel(const QString &label) const
{
    QNBUniqueNameSearch search(label, {});
    for (const ArrayController::Object &object : _ui_presetListController->arrangedObjects())
        search.addTaken(object->valueForKey(QNBPresetKey::label).toString());
    return search.uniqueName();
}

void QNBPrefPanePref::renameSelectedPreset()
{
    _ui_presetListView->editColumn(QNBPresetKey::label, _ui_presetListController->selectionIndex());
}

void QNBPrefPanePref::removeSelectedPresetAfterConfirmation()
{
    endEditing();
    const QNBPresetRecordPtr preset = _selectedItem;
    if (!preset)
        return;
    const AlertPanel alert{
        .title = tr("Remove Preset"),
        .message =
            tr("Are you sure you wish to permanently delete the preset '%1'?").arg(lineText(preset->label())),
        .defaultButton = tr("Remove Preset"),
        .alternateButton = tr("Cancel"),
        .otherButton = QString()};
    if (answerTo(alert) != AlertPanel::Answer::Default || preset != _selectedItem)
        return;
    _history.push(new QNBRemovePresetCommand(
        *_ui_presetListController, _ui_presetListController->selectionIndex(), tr("Remove Preset")));
    _ui_presetListView->setFocus();
}

void QNBPrefPanePref::moveSelectedPresetUp()
{
    dropSelectedPresetAtRow(_ui_presetListController->selectionIndex() - 1);
}

void QNBPrefPanePref::moveSelectedPresetDown()
{
    // Below the next one, that is, above the one after.
    dropSelectedPresetAtRow(_ui_presetListController->selectionIndex() + 2);
}

void QNBPrefPanePref::dropSelectedPresetAtRow(int row)
{
    QMimeData data;
    Pasteboard pasteboard(data);
    tableViewWriteRowsWithIndexesToPasteboard(*_ui_presetListView,
                                              {_ui_presetListController->selectionIndex()}, pasteboard);
    tableViewAcceptDrop(*_ui_presetListView, DraggingInfo(data, DragOperation::Move), row,
                        TableDropOperation::Above);
}
