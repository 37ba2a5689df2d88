// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include "Source/QNBPaneLog.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>

void QNBPrefPanePref::readPreferences()
{
    QNBSettings settings;
    QNBSettingsStore::read(*_services.preferences, ourBundle(), settings);
    _presets = settings.presets;
    showMenubar = settings.showMenubar;
    shortcutCombo = settings.shortcutCombo;
}

void QNBPrefPanePref::writePreferences()
{
    if (!_mainView)
        return;
    const KeyCombo combo = _ui_shortcutRecorderControl->keyCombo();
    QNBSettings settings;
    settings.showMenubar = _ui_showMenubar->checkState() == Qt::Checked;
    settings.shortcutCombo = {.flags = combo.flags, .code = combo.code};
    settings.presets.reserve(_ui_presetListController->arrangedObjects().size());
    for (const ArrayController::Object &object : _ui_presetListController->arrangedObjects())
        settings.presets.append(std::static_pointer_cast<QNBPresetRecord>(object));

    const Result<> saved = QNBSettingsStore::write(*_services.preferences, settings);
    _lastSaveFailed = !saved;
    if (!saved)
        qCCritical(lcPane) << "the settings could not be saved, and will be with the next save:"
                           << _services.preferences->path() << saved.error;
    notifyPresetsChanged();
}

void QNBPrefPanePref::notifyPresetsChanged()
{
    _services.postNotificationName(QNBPresetConfigurationChangedNotification);
}

QVariant QNBPrefPanePref::configValueForKey(const QString &key) const
{
    return QNBSettingsStore::configValueForKey(ourBundle(), key);
}
