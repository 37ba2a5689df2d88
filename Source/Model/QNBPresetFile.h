// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"
#include "Source/Model/QNBPresetRecord.h"

/// Preset files: one preset record as a keyed archive, extension "qnbp".
namespace QNBPresetFile {

inline const QString extension = QStringLiteral("qnbp");

/// The file name for a preset of this label: the label without characters that are unsafe in file names, or
/// "QNB Preset" if nothing is left, with the extension.
QString fileNameForLabel(const QString &label);

/// Writes the record to its file in \a folder, replacing one of that name, and a link of that name too;
/// \a fileName receives the name. Who may read a new one the umask decides.
Result<> write(const QNBPresetRecord &record, const QString &folder, QString *fileName);

/// The preset of a file, labelled with the file's name without its extension. Fails if the file is
/// unreadable, holds no entries or what could not be saved among the presets.
Result<QNBPresetRecordPtr> read(const QString &path);

} // namespace QNBPresetFile
