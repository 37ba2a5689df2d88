// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBUniqueName.h"

QString QNBUniqueName(const QString &base, const QString &extension, const QSet<QString> &takenLowerCase)
{
    const QString suffix = extension.isEmpty() ? QString() : u'.' + extension;
    QString candidate = base + suffix;
    for (int counter = 1; takenLowerCase.contains(candidate.toLower()); ++counter)
        candidate = base + u'-' + QString::number(counter) + suffix;
    return candidate;
}
