// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/LineText.h"
#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Model/QNBSupportFiles.h"
#include "Toolkit/ArrayController.h"

#include <QMenu>

void QNBPrefPanePref::showDefaultPresets()
{
    _defaultPresetsMenu->clear();
    // Each time read anew: what is chosen goes into the list and is edited there.
    const QList<QNBPresetRecordPtr> presets = QNBSettingsStore::defaultPresets(ourBundle());
    for (const QNBPresetRecordPtr &preset : presets) {
        // Nothing in a label is a mnemonic.
        const QString text = lineText(preset->label()).replace(u'&', QStringLiteral("&&"));
        connect(_defaultPresetsMenu->addAction(text), &QAction::triggered, this,
                [this, preset] { addDefaultPreset(preset); });
    }
    if (presets.isEmpty())
        _defaultPresetsMenu->addAction(tr("No Default Presets"))->setEnabled(false);
}

/// To undo it takes the preset out of the list. Files that came with it stay: the user may have changed them,
/// or have chosen them for other presets meanwhile.
void QNBPrefPanePref::addDefaultPreset(const QNBPresetRecordPtr &preset)
{
    // What is being typed may be the name that the preset would get.
    endEditing();
    const QString label = preset->label();
    preset->setValueForKey(uniqueLabel(label), QNBPresetKey::label);
    _history.push(new QNBInsertPresetsCommand(
        *_ui_presetListController, {preset},
        static_cast<int>(_ui_presetListController->arrangedObjects().size()), tr("Add Default Preset")));
    _ui_presetListView->setFocus();

    const std::optional<Bundle> bundle = ourBundle();
    const QString defaults = bundle ? QNBSettingsStore::defaultApplicationSupport(*bundle) : QString();
    const Result<> copied = QNBSupportFiles::copyMissing(QNBSupportFiles::namedBy(*preset), defaults,
                                                         _services.applicationSupportPath);
    if (copied)
        return;
    answerTo({.title = tr("Files Missing"),
              .message = tr("The preset '%1' was added, but files that it uses could not be put into the "
                            "folder '%2':\n%3")
                             .arg(lineText(preset->label()), lineText(_services.applicationSupportPath),
                                  copied.error),
              .defaultButton = tr("OK")});
}
