// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/MenuText.h"
#include "Platform/DesktopFolders.h"
#include "Platform/LineText.h"

namespace {

const QString mark = QStringLiteral("&");
const QString escapedMark = QStringLiteral("&&");
const QString trayMark = QStringLiteral("_");
const QString escapedTrayMark = QStringLiteral("__");
const QString ellipsis = QStringLiteral("…");

QString shortened(const QString &text)
{
    if (text.size() <= MenuText::longest)
        return text;
    const qsizetype half = (MenuText::longest - ellipsis.size()) / 2;
    QString start = text.left(half);
    if (start.back().isHighSurrogate())
        start.chop(1);
    QString end = text.right(half);
    if (end.front().isLowSurrogate())
        end.remove(0, 1);
    return start + ellipsis + end;
}

} // namespace

QString MenuText::forName(const QString &name, Reader reader)
{
    QString text = shortened(lineText(name));
    if (reader == Reader::Library)
        return text.replace(mark, escapedMark);
    // A mark in front, of the first letter, is the one that the library turns: the others stay.
    const bool needsMark = text.contains(mark);
    text.replace(trayMark, escapedTrayMark);
    return needsMark ? mark + text : text;
}

QString MenuText::shownFolder(const QString &folder)
{
    const QString home = DesktopFolders::home();
    if (home.isEmpty() || (folder != home && !folder.startsWith(home + u'/')))
        return folder;
    return u'~' + folder.mid(home.size());
}
