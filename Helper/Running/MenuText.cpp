// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/MenuText.h"
#include "Helper/ShownName.h"

namespace {

const QString mark = QStringLiteral("&");
const QString escapedMark = QStringLiteral("&&");
const QString trayMark = QStringLiteral("_");
const QString escapedTrayMark = QStringLiteral("__");

} // namespace

QString MenuText::forName(const QString &name, Reader reader)
{
    QString text = ShownName::ofName(name);
    if (reader == Reader::Library)
        return text.replace(mark, escapedMark);
    // A mark in front, of the first letter, is the one that the library turns: the others stay.
    const bool needsMark = text.contains(mark);
    text.replace(trayMark, escapedTrayMark);
    return needsMark ? mark + text : text;
}
