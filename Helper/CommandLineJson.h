// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/CreatePreset.h"

#include <QJsonArray>
#include <QJsonObject>

/// What the command line prints for other programs.
namespace CommandLineJson {

QJsonArray presets(const QList<QNBPresetRecordPtr> &presets);
/// What would be done in one folder.
QJsonObject plan(const Creation::Plan &plan);
/// What was done in one folder.
QJsonObject report(const CreationReport &report);
QJsonObject undo(const UndoReport &report);
/// All folders of one preset.
QJsonObject creations(const QString &label, bool isDryRun, const QJsonArray &folders);

} // namespace CommandLineJson
