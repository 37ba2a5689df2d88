// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include "Source/QNBPresetListCommands.h"
#include "Source/QNBUniqueName.h"
#include "Toolkit/ArrayController.h"

bool QNBPrefPanePref::tableViewValidateValue(TableView &, QVariant &value, const TableColumn &, int)
{
    // A preset without a name could not be told from the others; the old name stays.
    return !value.toString().trimmed().isEmpty();
}

void QNBPrefPanePref::addPreset()
{
    QNBUniqueNameSearch search(tr("Untitled Preset"), {});
    for (const ArrayController::Object &object : _ui_presetListController->arrangedObjects())
        search.addTaken(object->valueForKey(QNBPresetKey::label).toString());

    const auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(search.uniqueName(), QNBPresetKey::label);
    _history.push(new QNBInsertPresetsCommand(
        *_ui_presetListController, {record},
        static_cast<int>(_ui_presetListController->arrangedObjects().size()), tr("New Preset")));
    _ui_presetListView->editColumn(QNBPresetKey::label, _ui_presetListController->selectionIndex());
}
