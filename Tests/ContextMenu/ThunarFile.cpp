// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/ContextMenu/ThunarFile.h"

#include "ContextMenu/MenuText.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

QStringList ThunarFile::texts(const QByteArray &file, const QString &element)
{
    QStringList found;
    QXmlStreamReader reader(file);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == element)
            found.append(reader.readElementText());
    }
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
    return found;
}

QString ThunarFile::commandLine(const QString &command, const QString &folder)
{
    QString line;
    for (qsizetype at = 0; at < command.size(); ++at) {
        if (command.at(at) != u'%') {
            line += command.at(at);
            continue;
        }
        const QChar code = ++at < command.size() ? command.at(at) : QChar();
        if (code != u'%' && code != u'f')
            return {};
        line +=
            code == u'%' ? QStringLiteral("%") : QString::fromUtf8(MenuText::shellQuoted(folder.toUtf8()));
    }
    return line;
}
