// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Makes bundles, whole and broken ones.
namespace TestBundle {

/// The code of a pane that records its calls, and of a plug-in that is no pane.
QString recordingPane();
QString foreignPlugin();

/// A bundle at \a path with \a code as its executable (none if empty), named \a title.
void make(const QString &path, const QString &code, const QString &title = QStringLiteral("Recording"));
/// Writes `Contents/Info.plist` of the bundle at \a path with \a bytes as they are.
void writeInformation(const QString &path, const QByteArray &bytes);

} // namespace TestBundle
