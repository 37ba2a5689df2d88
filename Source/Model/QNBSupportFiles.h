// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"
#include "Platform/Result.h"

#include <QStringList>

class QNBPresetRecord;

/// The files that presets name: what their files begin with, and their scripts.
namespace QNBSupportFiles {

/// Their paths below the application-support folder, each once: the content files in the order of the items,
/// then the script.
QStringList namedBy(const QNBPresetRecord &preset);

/// Copies those of the files \a paths that are missing below \a supportPath from below \a defaults, durably
/// and with the modes of the originals, except that the owner may always change a copy. What is there is
/// never touched, be it a link that leads nowhere, or put there meanwhile; a file is not put into a folder
/// that is a link, or is named by "..". On failure the error has a line for each file that is still missing;
/// the others have been copied. \a layer stands for the system calls that write.
Result<> copyMissing(const QStringList &paths, const QString &defaults, const QString &supportPath,
                     FileLayer &layer = FileLayer::real());

} // namespace QNBSupportFiles
