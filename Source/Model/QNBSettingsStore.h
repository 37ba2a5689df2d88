// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/KeyCodes.h"
#include "Platform/Preferences/Preferences.h"
#include "Source/Model/QNBPresetRecord.h"

#include <QList>
#include <chrono>
#include <optional>
#include <vector>

/// The hot key as the domain stores it: virtual key code and modifier mask of the original platform.
using QNBKeyCombo = KeyCombo;

/// What the pane and the helper share through the product's preference domain.
struct QNBSettings
{
    QList<QNBPresetRecordPtr> presets;
    bool showMenubar = true;
    QNBKeyCombo shortcutCombo;
};

/// The settings as they stood at one moment, to be written on any thread while they change.
struct QNBSettingsSnapshot
{
    std::vector<QNBPresetSnapshot> presets;
    bool showMenubar = true;
    QNBKeyCombo shortcutCombo;
    QDateTime taken;
};

/// The keys of the product's preference domain, and what the store names besides.
namespace QNBPreferenceKey {
inline const QString presets = QStringLiteral("QNBPresets");
inline const QString presetsStored = QStringLiteral("QNBPresetsStored");
inline const QString presetsStoredLoaded = QStringLiteral("loaded");
inline const QString showMenubar = QStringLiteral("QNBShowMenubar");
inline const QString hotKeyCode = QStringLiteral("QNBHotKeyCode");
inline const QString hotKeyFlags = QStringLiteral("QNBHotKeyFlags");
/// True for a hot key that is known to be stored by its place on the keyboard.
inline const QString hotKeyIsPlace = QStringLiteral("QNBHotKeyIsPlace");
inline const QString launchHelperOnStart = QStringLiteral("QNBLaunchHelperOnStart");
inline const QString alreadyAskedToInstallCMM = QStringLiteral("QNBAlreadyAskedToInstallCMM");
/// In what encode() makes, never in the domain.
inline const QString taken = QStringLiteral("QNBTaken");
} // namespace QNBPreferenceKey

/// Posted after every save.
inline const QString QNBPresetConfigurationChangedNotification =
    QStringLiteral("QNBPresetConfigurationChangedNotification");

/// Posted when the pane begins to record a hot key, and at intervals while it does: a running helper leaves
/// the present one to it. After the last of them the helper waits for three intervals at most.
inline const QString QNBHotKeyIsBeingRecordedNotification =
    QStringLiteral("QNBHotKeyIsBeingRecordedNotification");
inline constexpr std::chrono::milliseconds QNBHotKeyRecordingInterval(2000);
/// Posted when it has ended.
inline const QString QNBHotKeyRecordingEndedNotification =
    QStringLiteral("QNBHotKeyRecordingEndedNotification");

/// Loads and saves the settings; the pane's readPreferences and writePreferences in a form without widgets.
namespace QNBSettingsStore {

/// Reads the domain into \a settings. Presets come from "QNBPresets" once they have been stored, else from
/// the resource "DefaultPresets" of \a bundle. The hot key stays as it is unless the domain holds both its
/// keys. If the domain is unread (see Preferences) after a failure, the settings only stand in for those that
/// are there: nothing can be saved before another read() has succeeded, and then they should be taken.
/// Whoever calls this should tell the user of Preferences::damage().
Result<> read(Preferences &preferences, const std::optional<Bundle> &bundle, QNBSettings &settings);

/// The settings as they are in the user's domain now, for a program that only reads them: nothing is written.
/// Those of a domain that is damaged, or gone, are those of its backup, which the log tells. Fails if neither
/// can be read: nothing is known of the settings then, and the default presets are not taken for them.
Result<QNBSettings> stored(const std::optional<Bundle> &bundle);

/// Writes every key and synchronises the domain; the presets in the given order.
Result<> write(Preferences &preferences, const QNBSettings &settings);

/// The presets that the bytes of a domain hold, as it was at another time; none that could be read is a
/// failure.
Result<QList<QNBPresetRecordPtr>> presetsOf(const QByteArray &domain);

/// Takes a small part of the time that encode() takes. \a taken is the time at which these were the settings,
/// if it is to be stored.
QNBSettingsSnapshot snapshot(const QNBSettings &settings, const QDateTime &taken = {});
/// The same keys and values in one dictionary, which is what a domain with nothing else in it holds; besides
/// them the time, if it is valid. On any thread.
EncodedPreference encode(const QNBSettingsSnapshot &settings);
/// What encode() made, of the document of its bytes; fails for anything else.
Result<QNBSettings> decode(const PropertyListDocument::Ptr &document);
/// The time that is stored there; invalid if there is none.
QDateTime takenAt(const PropertyListDocument::Ptr &document);

/// Whether the user wants the helper to run: who never chose does, and who chose by a value that is neither
/// yes nor no does not.
bool wantsHelper(Preferences &preferences);

/// The value of \a key in the bundle's information property list. A parse failure is logged; invalid then, as
/// without a bundle or key.
QVariant configValueForKey(const std::optional<Bundle> &bundle, const QString &key);

/// The presets of the resource "DefaultPresets" of \a bundle, read anew; none if it has none.
QList<QNBPresetRecordPtr> defaultPresets(const std::optional<Bundle> &bundle);

/// The bundle's folder "QNB Default AppSupport".
QString defaultApplicationSupport(const Bundle &bundle);

/// First-run set-up: if nothing exists at \a supportPath, the bundle's folder "QNB Default AppSupport" is
/// copied there, whole or not at all. What exists is never touched.
Result<> setUpApplicationSupport(const std::optional<Bundle> &bundle, const QString &supportPath);

} // namespace QNBSettingsStore
