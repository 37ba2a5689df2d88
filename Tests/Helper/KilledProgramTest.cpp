// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The program killed before each change that it makes to the disk: to the folder, and to what it remembers.

#include "Helper/CommandLine.h"
#include "Helper/History.h"
#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/KilledProcess.h"
#include "Tests/Session/Series.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>

#include <algorithm>
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
                     folder(text("folder"), {file(text("inside"))}, {{text("permissions"), text("700")}})})});
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

    /// Makes an earlier creation in another folder, which is that.
    QString createEarlier()
    {
        const QString earlier = home_.filePath(text("earlier"));
        EXPECT_TRUE(QDir().mkpath(earlier));
        EXPECT_EQ(run({text("--create"), text("Small"), text("--in"), earlier}).code, 0);
        return earlier;
    }

    /// Of the creation that is stored as the last one.
    QString lastCreation() const
    {
        const auto last = History(home_.stateFolder() + text("/Quenby")).read();
        EXPECT_EQ(last.error, QString());
        return last && *last ? (*last)->id : QString();
    }

    /// Expects that the first undo takes back what a killed creation in \a folders made, and nothing else,
    /// and that the earlier creation, \a last, can be undone then. Only one that came to its end has taken
    /// the place of that.
    void expectUndoneInOrder(const QStringList &folders, const QString &earlier, const QString &last)
    {
        const auto isRestored = [&folders] {
            return std::all_of(folders.begin(), folders.end(),
                               [](const QString &folder) { return tree(folder).isEmpty(); });
        };
        const bool hasBegun = !isRestored();
        const bool isComplete = lastCreation() != last;
        const Ended undone = run(undo);
        EXPECT_EQ(undone.code, 0) << undone.errors.constData();
        EXPECT_TRUE(isRestored()) << undone.errors.constData();
        const auto isEarlierThere = [&earlier] { return !tree(earlier).isEmpty(); };
        if (hasBegun) {
            EXPECT_TRUE(isEarlierThere()) << undone.errors.constData();
        }
        // The first one may have been of a creation that was about to begin.
        if (!isComplete && isEarlierThere()) {
            EXPECT_EQ(run(undo).code, 0);
            EXPECT_FALSE(isEarlierThere());
        }
        EXPECT_EQ(run(undo).code, int(ExitCode::NotUndone));
        ASSERT_TRUE(QDir(earlier).removeRecursively());
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

TEST_F(KilledProgramTest, ACreationKilledAtAnyTimeIsUndoneAndTheEarlierOneIsKept)
{
    putContent(text("content"), QByteArray(20'000, 'c'));
    QVariantList folders;
    for (int i = 0; i < 20; ++i) {
        QVariantList files;
        for (int j = 0; j < 20; ++j)
            files.append(file(text("file %1").arg(j), {{text("contentFilename"), text("content")}}));
        folders.append(folder(text("folder %1").arg(i), files));
    }
    storePresets({preset(text("Many"), folders), preset(text("Small"), {file(text("small"))})});
    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(create(text("Many")).code, 0);
    const auto duration = int(timer.elapsed());
    ASSERT_EQ(run(undo).code, 0);
    int inTheMiddle = 0;
    for (int i = 0; i < seriesOf(10, 300); ++i) {
        SCOPED_TRACE(i);
        const QString earlier = createEarlier();
        const QString last = lastCreation();
        QProcess process;
        process.setProcessEnvironment(home_.environment());
        process.start(program(), {text("--create"), text("Many"), text("--in"), target()});
        ASSERT_TRUE(process.waitForStarted());
        process.waitForFinished(QRandomGenerator::global()->bounded(duration) + 1);
        process.kill();
        process.waitForFinished();
        const auto made = tree().size();
        inTheMiddle += made > 0 && made < 420 ? 1 : 0;
        expectUndoneInOrder({target()}, earlier, last);
    }
    RecordProperty("inTheMiddle", inTheMiddle);
}

TEST_F(KilledProgramTest, ACreationInTwoFoldersThatIsKilledIsUndoneInBoth)
{
    storePresets({preset(text("Two"), {folder(text("a"), {file(text("b"))}), folder(text("c"), {})}),
                  preset(text("Small"), {file(text("small"))})});
    const QString second = home_.filePath(text("second"));
    ASSERT_TRUE(QDir().mkpath(second));
    int kills = 0;
    for (const char *call : {"mkdirat", "rename", "unlink"}) {
        for (int number = 1;; ++number) {
            SCOPED_TRACE(::testing::Message() << call << ' ' << number);
            const QString earlier = createEarlier();
            const QString last = lastCreation();
            const bool wasKilled = KilledProcess::isKilledAt(
                text(call), number, program(),
                {text("--create"), text("Two"), text("--in"), target(), text("--in"), second},
                home_.environment());
            expectUndoneInOrder({target(), second}, earlier, last);
            if (!wasKilled)
                break;
            ++kills;
        }
    }
    EXPECT_GT(kills, 6);
}

TEST_F(KilledProgramTest, TheNextStartTellsOnceOfAKilledCreation)
{
    ASSERT_NO_FATAL_FAILURE(putMine());
    ASSERT_TRUE(KilledProcess::isKilledAt(text("mkdirat"), 1, program(),
                                          {text("--create"), text("A preset"), text("--in"), target()},
                                          home_.environment()));
    const Ended first = run({text("--list")});
    EXPECT_TRUE(first.errors.contains("interrupted")) << first.errors.constData();
    EXPECT_TRUE(first.errors.contains(target().toUtf8())) << first.errors.constData();
    EXPECT_EQ(run({text("--list")}).errors, QByteArray());
    EXPECT_EQ(run(undo).code, 0);
    EXPECT_THAT(tree(), ElementsAre(text("there/"), text("there/mine")));
}
