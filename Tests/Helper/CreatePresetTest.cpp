// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CreatePreset.h"

#include "Helper/Creation/FileSystemTime.h"
#include "Helper/History.h"
#include "Platform/Files/FileLock.h"
#include "Tests/Helper/Creation/ForkedProcess.h"
#include "Tests/Helper/Creation/UnreservedDisk.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/SmallDisk.h"
#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gmock/gmock.h>
#include <sys/stat.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

/// A user whose folders this process uses for the time of a test.
class CreatePresetTest : public ::testing::Test
{
protected:
    CreatePresetTest()
    {
        qputenv(stateVariable, home_.stateFolder().toUtf8());
        request_.folder = home_.filePath(QStringLiteral("target"));
        EXPECT_TRUE(QDir().mkpath(request_.folder));
        request_.preset = std::make_shared<QNBPresetRecord>();
        request_.preset->setValueForKey(QStringLiteral("A preset"), QNBPresetKey::label);
        const QNBHierarchyItemPtr root = QNBHierarchyItem::init();
        for (const QString &name : {QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")}) {
            const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
            item->setFilename(name);
            root->addChild(item);
        }
        request_.preset->setFileHierarchy(root);
    }
    ~CreatePresetTest() override
    {
        if (stateBefore_.isNull())
            qunsetenv(stateVariable);
        else
            qputenv(stateVariable, stateBefore_);
    }

    static void put(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QString inTarget(const QString &name) const { return request_.folder + u'/' + name; }
    /// Everything that an ordinary user has to own.
    QByteArrayList foldersOfUser() const
    {
        QByteArrayList folders;
        for (const QString &folder : {home_.path(), home_.stateFolder(), stateFolder(), request_.folder})
            folders.append(QFile::encodeName(folder));
        return folders;
    }
    QString stateFolder() const { return home_.stateFolder() + QStringLiteral("/Quenby"); }

    /// Creates, and once an item is made fills \a disk.
    CreationReport createWhileItFills(SmallDisk &disk) const
    {
        return createPreset(request_, [&disk](qsizetype done, qsizetype) {
            EXPECT_TRUE(done != 1 || disk.fill(0));
            return true;
        });
    }

    QStringList names() const { return QDir(request_.folder).entryList(QDir::Files, QDir::Name); }

    TemporaryHome home_;
    CreationRequest request_;

private:
    static constexpr char stateVariable[] = "XDG_STATE_HOME";
    const QByteArray stateBefore_ = qgetenv(stateVariable);
};

} // namespace

TEST_F(CreatePresetTest, CreatesAndTellsHowFarItIs)
{
    qsizetype last = 0;
    qsizetype outOf = 0;
    const CreationReport report = createPreset(request_, [&](qsizetype done, qsizetype total) {
        last = done;
        outOf = total;
        return true;
    });
    EXPECT_EQ(report.status, CreationReport::Status::Created) << qPrintable(report.message);
    EXPECT_TRUE(report.isCreated());
    EXPECT_EQ(report.label, QStringLiteral("A preset"));
    EXPECT_EQ(last, 3);
    EXPECT_EQ(outOf, 3);
    EXPECT_EQ(report.script.outcome, ScriptResult::Outcome::NotRun);
    EXPECT_THAT(names(), ElementsAre(QStringLiteral("one"), QStringLiteral("three"), QStringLiteral("two")));
}

TEST_F(CreatePresetTest, OneThatIsCancelledLeavesNothing)
{
    const CreationReport report = createPreset(request_, [](qsizetype done, qsizetype) { return done < 2; });
    EXPECT_EQ(report.status, CreationReport::Status::Cancelled);
    EXPECT_FALSE(report.isCreated());
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
}

TEST_F(CreatePresetTest, ANameThatLooksLikeAPlaceGarblesNoMessage)
{
    const QNBHierarchyItemPtr root = QNBHierarchyItem::init();
    for (const QString &name : {QStringLiteral("../%1 %2"), QStringLiteral("..")}) {
        const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
        item->setFilename(name);
        root->addChild(item);
    }
    request_.preset->setFileHierarchy(root);
    const QString message = createPreset(request_).message;
    EXPECT_TRUE(message.contains(QStringLiteral("../%1 %2"))) << qPrintable(message);
    EXPECT_TRUE(message.endsWith(QStringLiteral("(and 1 more)"))) << qPrintable(message);
}

TEST_F(CreatePresetTest, ARecordWithoutATreeCreatesNothing)
{
    request_.preset->setFileHierarchy(nullptr);
    EXPECT_EQ(createPreset(request_).status, CreationReport::Status::Created);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(CreatePresetTest, ProblemsAreTold)
{
    request_.folder = home_.filePath(QStringLiteral("absent"));
    const CreationReport report = createPreset(request_);
    EXPECT_EQ(report.status, CreationReport::Status::Problems);
    EXPECT_FALSE(report.message.isEmpty());
    EXPECT_FALSE(report.isCreated());
}

TEST_F(CreatePresetTest, AnEarlierCreationIsUndoneByItsReportAndTheLastOneRemembered)
{
    const CreationReport first = createPreset(request_);
    const CreationReport second = createPreset(request_);
    EXPECT_NE(first.step->id(), second.step->id());
    EXPECT_EQ(names().size(), 6);
    EXPECT_EQ(undoCreation(first).status, UndoReport::Status::Undone);
    EXPECT_THAT(names(),
                ElementsAre(QStringLiteral("one-1"), QStringLiteral("three-1"), QStringLiteral("two-1")));
    const UndoReport undone = undoLastCreation();
    EXPECT_EQ(undone.status, UndoReport::Status::Undone) << qPrintable(undone.message);
    EXPECT_EQ(undone.label, QStringLiteral("A preset"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(CreatePresetTest, TheLastOneIsForgottenOnceItsReportUndidIt)
{
    const CreationReport report = createPreset(request_);
    EXPECT_EQ(undoCreation(report).status, UndoReport::Status::Undone);
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
    EXPECT_EQ(undoCreation(report).status, UndoReport::Status::Refused);
}

TEST_F(CreatePresetTest, OneThatCannotBeRememberedIsCreatedAllTheSameAndThatIsTold)
{
    QFile inTheWay(home_.stateFolder() + QStringLiteral("/Quenby"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const CreationReport report = createPreset(request_);
    EXPECT_EQ(report.status, CreationReport::Status::Created);
    EXPECT_TRUE(report.warning.contains(inTheWay.fileName())) << qPrintable(report.warning);
    EXPECT_EQ(names().size(), 3);
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Refused);
}

TEST_F(CreatePresetTest, AnUndoIsFinishedByItsReportAndByWhatIsRemembered)
{
    for (const bool isByReport : {true, false}) {
        const CreationReport report = createPreset(request_);
        // As an undo that was killed leaves it.
        ASSERT_TRUE(History().beginUndo());
        ASSERT_TRUE(QFile::remove(inTarget(QStringLiteral("three"))));
        const UndoReport undone = isByReport ? undoCreation(report) : undoLastCreation();
        EXPECT_EQ(undone.status, UndoReport::Status::Undone) << qPrintable(undone.message);
        EXPECT_THAT(names(), IsEmpty());
        EXPECT_FALSE(History().hasCreation());
    }
}

TEST_F(CreatePresetTest, ARefusedUndoIsNoneThatWasBegun)
{
    createPreset(request_);
    const QString added = inTarget(QStringLiteral("three"));
    put(added, "changed");
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Refused);
    ASSERT_TRUE(QFile::remove(added));
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Refused) << "it is not the undo that removed it";
    EXPECT_EQ(names().size(), 2);
}

TEST_F(CreatePresetTest, OnAFullDiskItIsUndoneOrNotRememberedAndAnEarlierOneIsNotTakenForIt)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        EXPECT_EQ(createPreset(request_).warning, QString());
        ASSERT_TRUE(disk.fill(0));
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
        EXPECT_THAT(names(), IsEmpty());

        ASSERT_TRUE(disk.clear());
        createPreset(request_);
        ASSERT_TRUE(disk.fill(0));
        // Also what the earlier one took.
        const CreationReport second = createWhileItFills(disk);
        EXPECT_EQ(second.status, CreationReport::Status::Created);
        EXPECT_FALSE(second.warning.isEmpty());
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
        EXPECT_EQ(names().size(), 6);
        EXPECT_EQ(undoCreation(second).status, UndoReport::Status::Undone);
        EXPECT_EQ(names().size(), 3);
    });
}

TEST_F(CreatePresetTest, NothingIsUndoneThatCannotBeMarkedOrForgotten)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::runAsOrdinaryUser(foldersOfUser(), [this] {
        createPreset(request_);
        ASSERT_EQ(::chmod(QFile::encodeName(stateFolder()).constData(), 0500), 0);
        createPreset(request_);
        const UndoReport refused = undoLastCreation();
        EXPECT_EQ(refused.status, UndoReport::Status::Refused);
        EXPECT_TRUE(refused.message.contains(stateFolder())) << qPrintable(refused.message);
        EXPECT_EQ(names().size(), 6);
        ASSERT_EQ(::chmod(QFile::encodeName(stateFolder()).constData(), 0700), 0);
    });
}

TEST_F(CreatePresetTest, OneInSeveralFoldersIsOneStepToUndo)
{
    const CreationReport earlier = createPreset(request_);
    CreationRequest second = request_;
    second.folder = home_.filePath(QStringLiteral("second"));
    ASSERT_TRUE(QDir().mkpath(second.folder));
    const auto inSecond = [&] { return QDir(second.folder).entryList(QDir::Files); };
    request_.step = second.step = std::make_shared<UndoStep>(2);
    createPreset(request_);
    EXPECT_EQ(History().read().value.value_or(std::nullopt)->id, earlier.step->id())
        << "it is not complete yet";
    const CreationReport report = createPreset(second);
    EXPECT_EQ(report.warning, QString());
    EXPECT_EQ(names().size(), 6);
    EXPECT_EQ(inSecond().size(), 3);

    put(inTarget(QStringLiteral("one-1")), "changed");
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Refused);
    EXPECT_EQ(inSecond().size(), 3) << "all or none";
    const UndoReport refused = undoCreation(report);
    EXPECT_EQ(refused.folders.size(), 2);
    ASSERT_TRUE(QFile::remove(inTarget(QStringLiteral("one-1"))));
    EXPECT_EQ(undoCreation(earlier).status, UndoReport::Status::Undone);
    EXPECT_EQ(names().size(), 2);
    EXPECT_EQ(inSecond().size(), 3);
}

TEST_F(CreatePresetTest, OneInSeveralFoldersIsUndoneInAll)
{
    for (const bool isByReport : {true, false}) {
        CreationRequest second = request_;
        second.folder = home_.filePath(QStringLiteral("second"));
        ASSERT_TRUE(QDir().mkpath(second.folder));
        request_.step = second.step = std::make_shared<UndoStep>(2);
        const CreationReport first = createPreset(request_);
        createPreset(second);
        const UndoReport undone = isByReport ? undoCreation(first) : undoLastCreation();
        EXPECT_EQ(undone.status, UndoReport::Status::Undone) << qPrintable(undone.message);
        EXPECT_THAT(undone.folders, ElementsAre(request_.folder, second.folder));
        EXPECT_THAT(names(), IsEmpty());
        EXPECT_THAT(QDir(second.folder).entryList(QDir::Files), IsEmpty());
        EXPECT_FALSE(canUndo());
    }
}

TEST_F(CreatePresetTest, OneThatFailsInTheLastOfItsFoldersIsRememberedInTheOthers)
{
    CreationRequest second = request_;
    second.folder = home_.filePath(QStringLiteral("absent"));
    request_.step = second.step = std::make_shared<UndoStep>(2);
    createPreset(request_);
    EXPECT_EQ(createPreset(second).status, CreationReport::Status::Problems);
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(CreatePresetTest, OneThatIsGoingOnIsNotTakenForAKilledOne)
{
    createPreset(request_);
    const CreationReport second = createPreset(request_, [this](qsizetype done, qsizetype) {
        if (done == 1) {
            EXPECT_THAT(newsOfInterruptedCreations(), IsEmpty());
            EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
            EXPECT_THAT(names(), ElementsAre(QStringLiteral("one-1")));
            EXPECT_FALSE(canUndo());
        }
        return true;
    });
    EXPECT_TRUE(second.isCreated());
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(CreatePresetTest, WhetherThereIsSomethingToUndoIsSaidWithoutWaitingForAnother)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    QFile killed(stateFolder() + QStringLiteral("/Creation-1.journal"));
    ASSERT_TRUE(killed.open(QIODevice::WriteOnly));
    {
        const Result<FileLock> lock =
            FileLock::acquire(FileLayer::real(), stateFolder() + QStringLiteral("/Creation.lock"), 0);
        ASSERT_TRUE(lock) << qPrintable(lock.error);
        QElapsedTimer time;
        time.start();
        EXPECT_FALSE(canUndo());
        EXPECT_LT(time.elapsed(), 3000) << "who creates is waited for ten seconds";
    }
    EXPECT_TRUE(canUndo());
}

TEST_F(CreatePresetTest, AJournalThatCannotBeReadHasNoEarlierCreationTakenForItsOwn)
{
    createPreset(request_);
    const QString journal = stateFolder() + QStringLiteral("/Creation-1.journal");
    QFile unreadable(journal);
    ASSERT_TRUE(unreadable.open(QIODevice::WriteOnly) && unreadable.write("of another version") > 0);
    unreadable.close();
    const UndoReport refused = undoLastCreation();
    EXPECT_EQ(refused.status, UndoReport::Status::Refused);
    EXPECT_THAT(refused.message.toStdString(), HasSubstr(journal.toStdString()));
    EXPECT_EQ(names().size(), 3);
    // One that was made after it is the last.
    const qint64 changed = FileSystemTime::now();
    ASSERT_TRUE(waitUntil([changed] { return FileSystemTime::now() > changed; }));
    createPreset(request_);
    EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
    EXPECT_EQ(names().size(), 3);
}

TEST_F(CreatePresetTest, WhileOneGoesOnWithoutAJournalTheEarlierOneIsNotTakenForIt)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        createPreset(request_);
        ASSERT_TRUE(disk.fill(0));
        const CreationReport second = createPreset(request_, [](qsizetype done, qsizetype) {
            EXPECT_FALSE(canUndo());
            return done == 0;
        });
        EXPECT_EQ(second.status, CreationReport::Status::Cancelled);
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone) << "nothing was made after it";
        EXPECT_THAT(names(), IsEmpty());
    });
}

TEST_F(CreatePresetTest, OneThatWasMadeMeanwhileStaysTheLast)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        createPreset(request_);
        const QStringList ofTheFirst = names();
        ASSERT_TRUE(disk.fill(0));
        createPreset(request_, [&](qsizetype, qsizetype) {
            EXPECT_TRUE(disk.clear());
            EXPECT_TRUE(createPreset(request_).isCreated());
            return false;
        });
        EXPECT_EQ(names().size(), 6);
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
        EXPECT_EQ(names(), ofTheFirst);
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
        EXPECT_THAT(QDir(stateFolder()).entryList({QStringLiteral("*.before-*")}), IsEmpty());
    });
}

TEST_F(CreatePresetTest, WhereTheDiskFillsUpMeanwhileTheJournalIsKept)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        createPreset(request_);
        const CreationReport second = createWhileItFills(disk);
        EXPECT_EQ(second.warning, QString());
        EXPECT_NE(second.step->change(second.place, second.record), QString()) << "a journal cannot say it";
        // A limit on files also forbids to note in the journal that there is nothing to be told.
        if (disk.isMounted()) {
            EXPECT_THAT(newsOfInterruptedCreations(), IsEmpty()) << "it was not";
        }
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone);
        EXPECT_EQ(names().size(), 3);
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::Undone) << "the earlier one is kept";
        EXPECT_THAT(names(), IsEmpty());
    });
}

TEST_F(CreatePresetTest, WhatAScriptChangedBeforeTheRecordCouldNotBeStoredIsTold)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        request_.step = std::make_shared<UndoStep>(2);
        const CreationReport first = createPreset(request_);
        EXPECT_EQ(request_.step->change(first.place, first.record), QString()) << "nothing is stored yet";
        request_.folder = home_.filePath(QStringLiteral("second"));
        ASSERT_TRUE(QDir().mkpath(request_.folder));
        const QString warning = createWhileItFills(disk).warning;
        EXPECT_THAT(warning.toStdString(), HasSubstr("cannot be undone later"));
    });
}

TEST_F(CreatePresetTest, AJournalThatTheDiskDoesNotTakeIsNotKeptForTheRecord)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        UnreservedDisk layer;
        layer.isLate = true;
        request_.step = std::make_shared<UndoStep>(1, layer);
        const QString warning = createWhileItFills(disk).warning;
        EXPECT_THAT(warning.toStdString(), HasSubstr("cannot be undone later"));
        request_.step.reset();
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
    });
}

TEST_F(CreatePresetTest, AJournalInWhichANoteIsMissingIsNotKeptForTheRecord)
{
    ASSERT_TRUE(QDir().mkpath(stateFolder()));
    ForkedProcess::run([this] {
        SmallDisk disk(stateFolder());
        UnreservedDisk layer;
        layer.isFull = true;
        request_.step = std::make_shared<UndoStep>(1, layer);
        EXPECT_EQ(createPreset(request_).warning, QString()) << "the record says all";
        request_.step = std::make_shared<UndoStep>(1, layer);
        const QString warning = createWhileItFills(disk).warning;
        EXPECT_THAT(warning.toStdString(), HasSubstr("cannot be undone later"));
        EXPECT_EQ(names().size(), 6);
        request_.step.reset();
        EXPECT_EQ(undoLastCreation().status, UndoReport::Status::NothingToUndo);
    });
}
