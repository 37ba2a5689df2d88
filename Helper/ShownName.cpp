// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ShownName.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/LineText.h"

namespace {

const QString ellipsis = QStringLiteral("…");

} // namespace

QString ShownName::ofName(const QString &name)
{
    const QString text = lineText(name);
    if (text.size() <= longest)
        return text;
    const qsizetype half = (longest - ellipsis.size()) / 2;
    QString start = text.left(half);
    if (start.back().isHighSurrogate())
        start.chop(1);
    QString end = text.right(half);
    if (end.front().isLowSurrogate())
        end.remove(0, 1);
    return start + ellipsis + end;
}

QString ShownName::ofFolder(const QString &folder)
{
    const QString home = DesktopFolders::home();
    if (home.isEmpty() || (folder != home && !folder.startsWith(home + u'/')))
        return ofName(folder);
    return ofName(u'~' + folder.mid(home.size()));
}
