// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RecentFolders.h"

#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLayer.h"
#include "Platform/Files/FileLock.h"
#include "Tests/Platform/Files/KilledAtRename.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class RecentFoldersTest : public ::testing::Test
{
protected:
    QString made(const QString &name) const
    {
        EXPECT_TRUE(QDir().mkpath(folder_.filePath(name)));
        return folder_.filePath(name);
    }
    QString state() const { return folder_.filePath(QStringLiteral("state/Quenby")); }

    const QTemporaryDir folder_;
};

} // namespace

TEST_F(RecentFoldersTest, TheLastOneIsFirstAndKept)
{
    const QString one = made(QStringLiteral("one"));
    const QString other = made(QStringLiteral("öther\nwith a break"));
    RecentFolders folders(state());
    EXPECT_THAT(folders.existing(), IsEmpty());
    folders.add({one});
    folders.add({other});
    EXPECT_THAT(folders.existing(), ElementsAre(other, one));
    folders.add({one});
    EXPECT_THAT(folders.existing(), ElementsAre(one, other));
    EXPECT_THAT(RecentFolders(state()).existing(), ElementsAre(one, other));
}

TEST_F(RecentFoldersTest, WhatAKilledWriterLeftGoesWithTheNextOne)
{
    RecentFolders folders(state());
    folders.add({made(QStringLiteral("one"))});
    KilledAtRename layer;
    const QString file = state() + QStringLiteral("/RecentFolders.plist");
    EXPECT_FALSE(DurableFileWriter(&layer).write(file, "half"));
    folders.add({made(QStringLiteral("other"))});
    EXPECT_THAT(
        QDir(state()).entryList(QDir::Files | QDir::Hidden),
        ElementsAre(QStringLiteral("RecentFolders.plist"), QStringLiteral("RecentFolders.plist.lock")));
}

TEST_F(RecentFoldersTest, OfSeveralProgramsEachKeepsWhatTheOthersAdd)
{
    const QString one = made(QStringLiteral("one"));
    const QString other = made(QStringLiteral("other"));
    RecentFolders helper(state());
    RecentFolders launcher(state());
    helper.add({one});
    EXPECT_THAT(launcher.existing(), ElementsAre(one));
    launcher.add({other});
    EXPECT_THAT(helper.existing(), ElementsAre(other, one));
    helper.add({one});
    EXPECT_THAT(launcher.existing(), ElementsAre(one, other));
}

TEST_F(RecentFoldersTest, WhatAnotherProgramIsWritingStays)
{
    ASSERT_TRUE(QDir().mkpath(state()));
    const QString file = state() + QStringLiteral("/RecentFolders.plist");
    const QString one = made(QStringLiteral("one"));
    const QString other = made(QStringLiteral("other"));
    RecentFolders folders(state());
    {
        const Result<FileLock> lock = FileLock::acquire(FileLayer::real(), file + QStringLiteral(".lock"), 0);
        ASSERT_TRUE(lock);
        folders.add({one});
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_THAT(folders.existing(), ElementsAre(one)) << "it is known here all the same";
    }
    folders.add({other});
    EXPECT_THAT(RecentFolders(state()).existing(), ElementsAre(other, one));
}

TEST_F(RecentFoldersTest, OneThatIsGoneIsNotShownUntilItIsBack)
{
    const QString one = made(QStringLiteral("one"));
    const QString other = made(QStringLiteral("other"));
    RecentFolders folders(state());
    folders.add({one});
    folders.add({other});
    ASSERT_TRUE(QDir().rmdir(other));
    EXPECT_THAT(folders.existing(), ElementsAre(one));
    made(QStringLiteral("other"));
    EXPECT_THAT(folders.existing(), ElementsAre(other, one));
}

TEST_F(RecentFoldersTest, OfManyAtOnceTheLastAreKept)
{
    const QString last = made(QStringLiteral("last"));
    const QString lastButOne = made(QStringLiteral("last but one"));
    QStringList many;
    for (int i = 0; i < 3000; ++i)
        many.append(folder_.filePath(QString::number(i)));
    RecentFolders folders(state());
    folders.add(many + QStringList{lastButOne, last});
    EXPECT_THAT(folders.existing(), ElementsAre(last, lastButOne));
    EXPECT_THAT(RecentFolders(state()).existing(), ElementsAre(last, lastButOne));
}

TEST_F(RecentFoldersTest, OnlySoManyAreKeptAndShown)
{
    RecentFolders folders(state());
    for (int i = 0; i <= RecentFolders::mostKept; ++i)
        folders.add({made(QString::number(i))});
    EXPECT_EQ(folders.existing().size(), RecentFolders::mostShown);
    for (int i = 1; i <= RecentFolders::mostKept; ++i)
        ASSERT_TRUE(QDir().rmdir(folder_.filePath(QString::number(i))));
    // The first one had to go.
    EXPECT_THAT(RecentFolders(state()).existing(), IsEmpty());
}

TEST_F(RecentFoldersTest, AFileThatIsNoListIsReplaced)
{
    ASSERT_TRUE(QDir().mkpath(state()));
    QFile file(state() + QStringLiteral("/RecentFolders.plist"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no property list");
    file.close();
    RecentFolders folders(state());
    EXPECT_THAT(folders.existing(), IsEmpty());
    const QString one = made(QStringLiteral("one"));
    folders.add({one});
    EXPECT_THAT(RecentFolders(state()).existing(), ElementsAre(one));
}
