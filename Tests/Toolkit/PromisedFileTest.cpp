// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PromisedFile.h"

#include "Tests/Session/FileContent.h"
#include "Tests/Session/Umask.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

const QString written = QStringLiteral("written.txt");

class PromisedFileTest : public ::testing::Test
{
protected:
    QString write(const QUrl &folder)
    {
        ++writes;
        privateFolder = folder.toLocalFile();
        if (!succeeds)
            return {};
        QFile file(QDir(privateFolder).filePath(written));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("content") > 0);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        return written;
    }
    PromisedFile promised(const QString &probableName)
    {
        return PromisedFile(probableName, [this](const QUrl &folder) { return write(folder); });
    }

    QTemporaryDir destination;
    int writes = 0;
    bool succeeds = true;
    QString privateFolder;
};

TEST_F(PromisedFileTest, IsWrittenOnceAfterTheDropHoweverOftenItIsAskedFor)
{
    PromisedFile file = promised(written);
    file.drop();
    EXPECT_EQ(writes, 0);
    const QUrl url = file.url();
    EXPECT_EQ(contentOf(url.toLocalFile()), "content");
    EXPECT_EQ(file.url(), url);
    EXPECT_EQ(writes, 1);
}

TEST_F(PromisedFileTest, IsWhereItWasSaidToBeThoughWrittenUnderAnotherName)
{
    PromisedFile file = promised(QStringLiteral("probable.txt"));
    const QUrl url = file.url();
    EXPECT_EQ(url.fileName(), QStringLiteral("probable.txt"));
    EXPECT_EQ(writes, 0);
    EXPECT_FALSE(QFile::exists(url.toLocalFile()));
    file.drop();
    EXPECT_EQ(contentOf(url.toLocalFile()), "content");
    EXPECT_EQ(file.url(), url);
    EXPECT_EQ(writes, 1);
}

TEST_F(PromisedFileTest, ItsFolderIsPrivateAndGoesWithIt)
{
    {
        PromisedFile file = promised(written);
        file.drop();
        file.url();
        struct stat status
        {
        };
        ASSERT_EQ(::stat(QFile::encodeName(privateFolder).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700u);
    }
    EXPECT_FALSE(QFile::exists(privateFolder));
}

TEST_F(PromisedFileTest, IsSavedUnderThePathThatAnotherProgramChose)
{
    const QString path = destination.filePath(QStringLiteral("chosen.txt"));
    PromisedFile file = promised(written);
    EXPECT_TRUE(file.writeTo(path));
    EXPECT_EQ(contentOf(path), "content");
    EXPECT_TRUE(QDir(privateFolder).isEmpty());
    // And is there from then on.
    EXPECT_EQ(file.url(), QUrl::fromLocalFile(path));
    EXPECT_EQ(writes, 1);
}

TEST_F(PromisedFileTest, WhatIsSavedHasTheModeThatTheUmaskLeaves)
{
    const QString path = destination.filePath(QStringLiteral("chosen.txt"));
    for (const unsigned mask : {022U, 027U, 077U}) {
        const Umask umask(mask);
        ASSERT_TRUE(promised(written).writeTo(path));
        struct stat status
        {
        };
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0666U & ~mask) << std::oct << mask;
        ASSERT_TRUE(QFile::remove(path));
    }
}

TEST_F(PromisedFileTest, ALinkAtTheChosenPathIsReplacedAndNotFollowed)
{
    const QString path = destination.filePath(QStringLiteral("chosen.txt"));
    const QString victim = destination.filePath(QStringLiteral("victim"));
    ASSERT_TRUE(QFile::link(victim, path));
    EXPECT_TRUE(promised(written).writeTo(path));
    EXPECT_FALSE(QFileInfo(path).isSymLink());
    EXPECT_FALSE(QFile::exists(victim));
}

TEST_F(PromisedFileTest, ReplacesAFileThatTheOtherProgramChose)
{
    const QString path = destination.filePath(written);
    QFile existing(path);
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly) && existing.write("before") > 0);
    existing.close();
    EXPECT_TRUE(promised(written).writeTo(path));
    EXPECT_EQ(contentOf(path), "content");
}

TEST_F(PromisedFileTest, AFailureIsAFailureForEverybodyAndTriedOnce)
{
    succeeds = false;
    PromisedFile file = promised(written);
    file.drop();
    EXPECT_FALSE(file.url().isValid());
    EXPECT_FALSE(file.writeTo(destination.filePath(written)));
    EXPECT_FALSE(file.isWritten());
    EXPECT_EQ(writes, 1);
}

TEST_F(PromisedFileTest, WhereNothingCanBeSavedTheFileIsStillToBeHad)
{
    PromisedFile file = promised(written);
    EXPECT_FALSE(file.writeTo(destination.filePath(QStringLiteral("none/chosen.txt"))));
    EXPECT_EQ(contentOf(file.url().toLocalFile()), "content");
}

TEST_F(PromisedFileTest, ANameThatLeadsElsewhereIsNotBelieved)
{
    for (const QString &name : {QStringLiteral("../outside.txt"), QStringLiteral(".."), QString()}) {
        PromisedFile file(written, [&name](const QUrl &) { return name; });
        file.drop();
        EXPECT_FALSE(file.url().isValid()) << name.toStdString();
    }
    EXPECT_EQ(promised(QStringLiteral("a/b.txt")).probableName(), QStringLiteral("a-b.txt"));
}

} // namespace
