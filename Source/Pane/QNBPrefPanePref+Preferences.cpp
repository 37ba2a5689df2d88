// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Source/Pane/QNBStoredNotice.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>
#include <QFileInfo>
#include <utility>

void QNBPrefPanePref::readPreferences()
{
    QNBSettings settings;
    const Result<> read = QNBSettingsStore::read(*_services.preferences, ourBundle(), settings);
    if (!read) {
        const std::optional<Preferences::Damage> &damage = _services.preferences->damage();
        _standIn = damage ? damage->backup : QDateTime();
        qCCritical(lcPane) << "the settings could not be read:" << _services.preferences->path()
                           << read.error;
        tellUnread(read);
    } else {
        _standIn.reset();
        tellMended(true);
    }
    takeSettings(settings);
}

void QNBPrefPanePref::tellUnread(const Result<> &read)
{
    if (!_listener)
        return;
    // They were read, and cannot be kept aside, as they have to be before edited ones replace them.
    if (!_services.preferences->isUnread()) {
        _listener->takeBackNotice(PaneNotice::Kind::Unreadable);
        return _listener->saved(read);
    }
    PaneNotice notice = QNBStoredNotice::ofUnread(read.error, _services.preferences->damage(),
                                                  _standIn.value_or(QDateTime()), _mainView && isEdited());
    notice.actions = {{tr("Try Again"), [this] {
                           endEditing();
                           if (const Result<> again = catchUpWithStored(); !again)
                               tellUnread(again);
                       }}};
    _listener->showNotice(notice);
}

/// To be called after a read or a save that was done; \a isShown says whether what took the place of
/// something damaged is shown.
void QNBPrefPanePref::tellMended(bool isShown)
{
    const std::optional<Preferences::Damage> &damage = _services.preferences->damage();
    if (!_listener || !damage)
        return;
    PaneNotice notice = QNBStoredNotice::ofMended(*damage, isShown);
    if (!_services.preferences->earlierStates().isEmpty())
        notice.actions = {{tr("Restore an Earlier State…"), [this] { restoreEarlierState(); }}};
    _listener->showNotice(notice);
}

void QNBPrefPanePref::takeSettings(const QNBSettings &settings)
{
    _presets = settings.presets;
    showMenubar = settings.showMenubar;
    shortcutCombo = settings.shortcutCombo;
}

/// Whether presets or options are shown that differ from those that were read, or that stand in for them.
bool QNBPrefPanePref::isEdited() const
{
    return !_history.isClean() || _ui_showMenubar->isChecked() != showMenubar ||
           _ui_shortcutRecorderControl->keyCombo() != shortcutCombo;
}

/// What is shown instead of settings that could not be read must not replace them: they are shown if they can
/// be read by now. Presets that the user has edited meanwhile replace them, with a copy kept; so does an
/// option that the user has chosen.
Result<> QNBPrefPanePref::catchUpWithStored()
{
    QNBSettings stored;
    if (Result<> read = QNBSettingsStore::read(*_services.preferences, ourBundle(), stored); !read)
        return read;
    // Here, for the next read knows nothing of it.
    tellMended(_history.isClean());
    if (_history.isClean()) {
        _history.clear();
        _ui_presetListController->setContent({stored.presets.begin(), stored.presets.end()});
    } else if (Result<> kept = _services.preferences->keepAsideCopy(
                   QStringLiteral("it could not be read before, and the presets were edited meanwhile"));
               !kept) {
        return kept;
    }
    const KeyCombo combo = _ui_shortcutRecorderControl->keyCombo();
    if (_ui_showMenubar->isChecked() != showMenubar)
        stored.showMenubar = !showMenubar;
    if (combo != shortcutCombo)
        stored.shortcutCombo = combo;
    stored.presets = shownPresets();
    takeSettings(stored);
    showOptions(showMenubar, shortcutCombo);
    buildTreesWhenIdle();
    _standIn.reset();
    if (_listener)
        _listener->takeBackNotice(PaneNotice::Kind::Unreadable);
    _unsavedState.offerWhatWasLeft();
    return {};
}

void QNBPrefPanePref::showOptions(bool isMenubarShown, const QNBKeyCombo &combo)
{
    _ui_showMenubar->setChecked(isMenubarShown);
    _ui_shortcutRecorderControl->setKeyCombo(combo);
}

QNBSettings QNBPrefPanePref::shownSettings() const
{
    QNBSettings settings;
    settings.showMenubar = _ui_showMenubar->checkState() == Qt::Checked;
    settings.shortcutCombo = _ui_shortcutRecorderControl->keyCombo();
    settings.presets = shownPresets();
    return settings;
}

QNBUnsavedState::Pane QNBPrefPanePref::paneOfUnsavedState()
{
    return {
        .shownSettings = [this] { return shownSettings(); },
        .isEdited = [this] { return !_standIn || !_history.isClean(); },
        .restore =
            [this](const QNBSettings &settings, const QString &step) {
                endEditing();
                const auto exchangeOptions = [this, others = settings]() mutable {
                    const QNBSettings present = shownSettings();
                    showOptions(others.showMenubar, others.shortcutCombo);
                    others = present;
                };
                _history.push(new QNBReplacePresetsCommand(*_ui_presetListController, settings.presets, step,
                                                           exchangeOptions));
            },
        .lastSave = [this] { return QFileInfo(_services.preferences->path()).lastModified(); },
        .listener = [this] { return _listener; },
    };
}

Result<> QNBPrefPanePref::writePreferences()
{
    if (!_mainView)
        return {};
    if (_standIn) {
        if (Result<> caughtUp = catchUpWithStored(); !caughtUp) {
            qCCritical(lcPane) << "nothing is saved over settings that could not be read:"
                               << _services.preferences->path() << caughtUp.error;
            tellUnread(caughtUp);
            notifyPresetsChanged();
            // What nobody has changed need not be saved.
            return isEdited() ? caughtUp : Result<>();
        }
    }
    const Result<> saved = QNBSettingsStore::write(*_services.preferences, shownSettings());
    if (saved) {
        _unsavedState.wasSaved();
        tellMended(false);
    } else {
        qCCritical(lcPane) << "the settings could not be saved, and will be with the next save:"
                           << _services.preferences->path() << saved.error;
        // Also where only an option has changed.
        _unsavedState.wasEdited();
    }
    if (_listener)
        _listener->saved(saved);
    notifyPresetsChanged();
    return saved;
}

Result<> QNBPrefPanePref::saveCopy(const QString &path)
{
    if (!_mainView)
        return {};
    const EncodedPreference settings = QNBSettingsStore::encode(QNBSettingsStore::snapshot(shownSettings()));
    const PropertyList::WriteResult copy = settings.writer.finish(settings.top);
    return copy ? DurableFileWriter().write(path, *copy.bytes) : Result<>::failure(copy.error);
}

void QNBPrefPanePref::notifyPresetsChanged()
{
    _services.postNotificationName(QNBPresetConfigurationChangedNotification);
}

QVariant QNBPrefPanePref::configValueForKey(const QString &key) const
{
    return QNBSettingsStore::configValueForKey(ourBundle(), key);
}
