// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The program killed before each change that it makes to the disk: to the folder, and to what it remembers.

#include "Helper/CommandLine.h"
#include "Helper/History.h"
#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/KilledProcess.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>

using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

const QStringList undo = {text("--undo")};

class KilledProgramTest : public HelperFixture
{
protected:
    KilledProgramTest()
    {
        storePresets(
            {preset(text("A preset"),
                    {folder(text("there"), {file(text("mine")), file(text("new"))}),
                     folder(text("folder"), {file(text("inside"))}, {{text("permissions"), text("500")}})})});
    }

    QString mine() const { return target() + text("/there/mine"); }

    bool isRemembered() const { return History(home_.stateFolder() + text("/Quenby")).hasCreation(); }

    void putMine() const
    {
        ASSERT_TRUE(QDir(target()).removeRecursively());
        ASSERT_TRUE(QDir().mkpath(target() + text("/there")));
        QFile file(mine());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("mine");
        file.close();
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(written_, QFileDevice::FileModificationTime));
    }

    /// Has runs with \a arguments killed after \a prepare, and expects that nothing of the user's is touched,
    /// that another creation completes, and that it can be undone.
    template <typename Prepare>
    void killRuns(const QStringList &arguments, Prepare prepare)
    {
        int kills = 0;
        for (const char *call : {"mkdirat", "fchmod", "unlinkat", "rename", "unlink"}) {
            for (int number = 1;; ++number) {
                SCOPED_TRACE(::testing::Message() << call << ' ' << number);
                ASSERT_NO_FATAL_FAILURE(putMine());
                prepare();
                const bool wasKilled =
                    KilledProcess::isKilledAt(text(call), number, program(), arguments, home_.environment());
                const QStringList left = tree();
                const Ended created = create(text("A preset"));
                ASSERT_EQ(created.code, 0) << created.errors.constData();
                const Ended undone = run(undo);
                EXPECT_EQ(undone.code, 0) << undone.errors.constData();
                EXPECT_EQ(tree(), left);
                EXPECT_THAT(left, Contains(text("there/mine")));
                EXPECT_EQ(bytesOf(text("there/mine")), "mine");
                EXPECT_EQ(QFileInfo(mine()).lastModified(), written_);
                if (!wasKilled)
                    break;
                ++kills;
            }
        }
        EXPECT_GT(kills, 3);
    }

    /// Has undos killed and each one followed by another. \a expectAfterKill is called with what is there.
    template <typename Check>
    void killUndos(Check expectAfterKill)
    {
        int kills = 0;
        for (const char *call : {"chmod", "fchmodat", "unlinkat", "rename", "unlink", "fsync"}) {
            for (int number = 1;; ++number) {
                SCOPED_TRACE(::testing::Message() << call << ' ' << number);
                ASSERT_NO_FATAL_FAILURE(putMine());
                ASSERT_EQ(create(text("A preset")).code, 0);
                if (!KilledProcess::isKilledAt(text(call), number, program(), undo, home_.environment()))
                    break;
                ++kills;
                expectAfterKill();
                EXPECT_EQ(bytesOf(text("there/mine")), "mine");
                EXPECT_EQ(QFileInfo(mine()).lastModified(), written_);
            }
        }
        EXPECT_GT(kills, 6);
    }

    /// Whole seconds: every disk keeps these.
    const QDateTime written_ = QDateTime::fromSecsSinceEpoch(1'600'000'000);
};

} // namespace

TEST_F(KilledProgramTest, AKilledCreationTouchesNothingOfTheUsers)
{
    killRuns({text("--create"), text("A preset"), text("--in"), target()}, [] {});
}

TEST_F(KilledProgramTest, AKilledUndoTouchesNothingOfTheUsers)
{
    killRuns(undo, [this] { ASSERT_EQ(create(text("A preset")).code, 0); });
    ASSERT_NO_FATAL_FAILURE(putMine());
    EXPECT_THAT(tree(), ElementsAre(text("there/"), text("there/mine")));
}

TEST_F(KilledProgramTest, ASecondUndoFinishesAKilledOne)
{
    killUndos([this] {
        const bool wasRemembered = isRemembered();
        const Ended undone = run(undo);
        EXPECT_EQ(undone.code, wasRemembered ? 0 : int(ExitCode::NotUndone)) << undone.errors.constData();
        EXPECT_THAT(tree(), ElementsAre(text("there/"), text("there/mine")));
        EXPECT_EQ(run(undo).code, int(ExitCode::NotUndone));
    });
}

TEST_F(KilledProgramTest, WhatTheUserAddedAfterAKilledUndoIsLeftWithAllTheRest)
{
    killUndos([this] {
        const QString added = target() + text("/folder/added");
        if (QFileInfo::exists(target() + text("/folder"))) {
            QFile file(added);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.close();
            const QStringList present = tree();
            EXPECT_EQ(run(undo).code, int(ExitCode::NotUndone));
            EXPECT_EQ(tree(), present);
            ASSERT_TRUE(file.remove());
        }
        const bool wasRemembered = isRemembered();
        EXPECT_EQ(run(undo).code, wasRemembered ? 0 : int(ExitCode::NotUndone));
        EXPECT_THAT(tree(), ElementsAre(text("there/"), text("there/mine")));
    });
}
