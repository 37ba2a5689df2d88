// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// The name of a colour in typographic quotes, the first letter of each word in upper case and the rest in
/// lower case; nothing for the empty name.
inline QString shownColorName(const QString &name)
{
    QString result = name.toLower();
    for (qsizetype i = 0; i < result.size(); ++i) {
        if (i == 0 || result.at(i - 1).isSpace())
            result[i] = result.at(i).toUpper();
    }
    return result.isEmpty() ? QString() : QStringLiteral("“%1”").arg(result);
}
