// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileURL.h"

#include <QList>
#include <QString>
#include <gtest/gtest.h>

TEST(FileURL, EveryByteOfANameMakesTheRoundTrip)
{
    for (int byte = 1; byte < 256; ++byte) {
        const QByteArray path = "/a" + QByteArray(1, static_cast<char>(byte)) + "b";
        EXPECT_EQ(pathOfFileURL(fileURLOfPath(path)), path) << byte;
    }
}

TEST(FileURL, HostileNamesMakeTheRoundTrip)
{
    const QList<QByteArray> paths = {"/",
                                     "/a b/\"quoted\" 'twice'",
                                     "/50%",
                                     "/%41%2F",
                                     "/new\nline",
                                     "/-rf",
                                     "/a?b#c;d&e=f",
                                     "/\xC3\x9Cn\xC3\xAF",
                                     "/\xFF\xFE",
                                     "/\xEF\xBB\xBFmark",
                                     "/a:b/c\\d",
                                     "/..name/.hidden",
                                     "/folder/",
                                     "//two/slashes"};
    for (const QByteArray &path : paths)
        EXPECT_EQ(pathOfFileURL(fileURLOfPath(path)), path) << path.constData();
}

TEST(FileURL, OfTextIsTheOneThatQtMakes)
{
    for (const QString &path : {QStringLiteral("/"), QStringLiteral("/some where/50%/Ünïcode?#:"),
                                QStringLiteral("/folder/"), QStringLiteral("/%41")})
        EXPECT_EQ(fileURLOfPath(path.toUtf8()), QUrl::fromLocalFile(path)) << qPrintable(path);
}

TEST(FileURL, OnlyFilesOfThisMachineHaveAPath)
{
    EXPECT_EQ(pathOfFileURL(QUrl(QStringLiteral("file://localhost/tmp"))), "/tmp");
    EXPECT_EQ(pathOfFileURL(QUrl(QStringLiteral("FILE:///tmp"))), "/tmp");
    for (const char *url : {"", "/tmp", "file:tmp", "file:", "file://server/tmp", "http:///tmp",
                            "https://quenby.example/tmp", "qrc:/tmp", "file:///a%00b", "file:///%00"})
        EXPECT_EQ(pathOfFileURL(QUrl(QString::fromLatin1(url))), std::nullopt) << url;
}
