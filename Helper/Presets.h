// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"
#include "Source/Model/QNBSettingsStore.h"

#include <optional>

/// The name of the helper: of its bundle, its executable and its process.
inline const QString helperName = QStringLiteral("QNBHelper");

/// The path of the bundle that this helper is.
QString helperBundlePath();

/// The pane's bundle that this helper lies in; none for a helper that was put elsewhere.
std::optional<Bundle> paneBundle();
/// The same for a program in \a executableFolder.
std::optional<Bundle> paneBundle(const QString &executableFolder);

/// The settings as they are in the domain now. Presets that were never stored are the pane's default ones,
/// and none without a pane. Nothing is written. The presets are for the calling thread, until each of their
/// trees has been asked for. Fails, with a sentence for the user, while nothing is known of the settings.
Result<QNBSettings> readSettings();

/// The labels of \a presets, in their order.
QStringList labelsOf(const QList<QNBPresetRecordPtr> &presets);

/// Whether the user wants the helper to run; not if that cannot be read.
bool helperIsWanted();

/// The preset that people name \a name: the one with that label or, if none has it, the one of that number,
/// "#1" being the first. None if there is no such preset, or more than one, with the reason for people in \a
/// error.
QNBPresetRecordPtr presetNamed(const QList<QNBPresetRecordPtr> &presets, const QString &name, QString *error);

/// The preset that an entry of a menu shows, which may be older than the list: the one of that \a position,
/// from 1, among those that have this label or, without a position, the only one that has it. A number of the
/// list names none here: it says nothing of what the menu shows. None otherwise, with the reason for people
/// in \a error.
QNBPresetRecordPtr presetShown(const QList<QNBPresetRecordPtr> &presets, const QString &label,
                               std::optional<int> position, QString *error);

/// How many files and folders a preset has.
qsizetype numberOfItems(const QNBPresetRecord &preset);

/// The folders of content files and scripts, made as the pane makes them if the user has none yet. What is
/// missing then is told when it is needed.
void setUpApplicationSupport();
