// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSet>
#include <QString>

/// \a base with \a extension (if that is not empty), or the first of "base-1.extension", "base-2.extension" …
/// that is not among \a takenLowerCase: names in lower case, because comparison ignores case.
QString QNBUniqueName(const QString &base, const QString &extension, const QSet<QString> &takenLowerCase);
