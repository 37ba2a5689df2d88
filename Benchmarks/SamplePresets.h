// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetRecord.h"

#include <QByteArray>
#include <QList>

/// Presets of a given size, the same at every run: folders of ten entries, files with the endings that people
/// use, one item in five with a colour, one file in ten with a content file.
namespace SamplePresets {

/// \a items items in presets of at most \a itemsPerPreset.
QList<QNBPresetRecordPtr> presets(qsizetype items, qsizetype itemsPerPreset);

/// A preset of \a items files in its root, named "Untitled", "Untitled-1" …
QNBPresetRecordPtr flatPreset(qsizetype items);

/// The items of all trees, roots not counted.
qsizetype countItems(const QList<QNBPresetRecordPtr> &presets);

/// A domain file with these presets.
QByteArray domainBytes(const QList<QNBPresetRecordPtr> &presets);

} // namespace SamplePresets
