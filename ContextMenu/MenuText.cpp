// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/MenuText.h"

#include "ContextMenu/PresetMenu.h"
#include "Platform/Desktop/DesktopEntry.h"

QByteArray MenuText::shellQuoted(const QByteArray &argument)
{
    QByteArray quoted = argument;
    return '\'' + quoted.replace('\'', "'\\''") + '\'';
}

QByteArray MenuText::desktopCommandLine(const QByteArrayList &arguments, const QByteArray &folder)
{
    QByteArray line;
    for (const QByteArray &argument : arguments)
        line += DesktopEntry::quoted(argument) + ' ';
    return line + PresetMenu::folderOption + ' ' + folder;
}

QByteArray MenuText::shellCommandLine(const QByteArrayList &arguments, const QByteArray &folder)
{
    QByteArray line;
    for (const QByteArray &argument : arguments)
        line += shellQuoted(argument) + ' ';
    return line.replace('%', "%%") + PresetMenu::folderOption + ' ' + folder;
}

QString MenuText::withoutMnemonics(const QString &title, QChar mark)
{
    QString text = title;
    return text.replace(mark, QString(2, mark));
}

QString MenuText::withoutFieldCodes(const QString &title)
{
    return withoutMnemonics(title, u'%');
}

QString MenuText::number(qsizetype index)
{
    return QString::number(index + 1).rightJustified(4, u'0');
}
