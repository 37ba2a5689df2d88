// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Creations that were killed, or cut off by a power failure, and undone by their journals.

#include "Helper/Creation/InterruptedUndo.h"

#include "CreationFixture.h"
#include "FailingFolderLayer.h"
#include "ForkedProcess.h"
#include "Helper/Creation/Journal.h"
#include "UnreservedDisk.h"

#include <QFile>
#include <algorithm>
#include <set>

using Creation::JournalContent;
using Creation::JournalFormat;
using ::testing::ElementsAre;

class InterruptedUndoTest : public CreationFixture
{
protected:
    void SetUp() override
    {
        put(contentFolder() + QStringLiteral("/content"), content_);
        startAgain();
    }

    void startAgain() const
    {
        DiskTree::clear(target());
        makeFolder(inTarget(QStringLiteral("there")));
        put(inTarget(QStringLiteral("there/mine")), "mine");
    }

    static QNBHierarchyItemPtr tree()
    {
        const QString content = QStringLiteral("content");
        return Items::root({
            Items::folder(QStringLiteral("there"),
                          {Items::file(QStringLiteral("new"), {QStringLiteral("640"), {}, content})}),
            Items::folder(QStringLiteral("folder"),
                          {Items::folder(QStringLiteral("locked"), {Items::file(QStringLiteral("deep"))},
                                         {QStringLiteral("000"), QStringLiteral("red"), {}}),
                           Items::file(QStringLiteral("a"), {QStringLiteral("000"), {}, content})},
                          {QStringLiteral("500"), {}, {}}),
            Items::folder(QStringLiteral("empty")),
            Items::file(QStringLiteral("last"), {QStringLiteral("400"), QStringLiteral("red"), {}}),
        });
    }

    QString journalPath() const { return outside() + QStringLiteral("/journal"); }

    void writeJournal(const Creation::Plan &planned) const
    {
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
        put(journalPath(),
            JournalFormat::write({QStringLiteral("id"), QStringLiteral("A preset"),
                                  qint64(now.tv_sec) * 1'000'000'000 + now.tv_nsec, false, planned}));
    }
    /// Writes the journal ahead, and creates.
    void createWithJournal(FolderLayer &layer = FolderLayer::real()) const
    {
        const Creation::Plan planned = plan(tree());
        writeJournal(planned);
        const auto journal = Creation::Journal::open(journalPath());
        ASSERT_TRUE(journal) << qPrintable(journal.error);
        EXPECT_TRUE(Creation::execute(planned, {}, layer, journal->get()).succeeded);
    }
    bool isKilledAt(int call) const
    {
        return ForkedProcess::isKilled([this, call] {
            FailingFolderLayer layer;
            layer.killingCall = call;
            createWithJournal(layer);
        });
    }
    QByteArray journalBytes() const
    {
        QFile file(journalPath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    JournalContent journal() const
    {
        const auto content = JournalFormat::read(journalBytes());
        EXPECT_TRUE(content.has_value());
        return content.value_or(JournalContent());
    }

    void expectRestored(const Creation::InterruptedUndoOutcome &outcome) const
    {
        EXPECT_EQ(outcome.left, QString());
        EXPECT_THAT(DiskTree::paths(disk()), ElementsAre("there", "there/mine"));
        EXPECT_EQ(DiskTree::at(disk(), "there/mine").bytes, "mine");
    }
    void expectLeft(const Creation::InterruptedUndoOutcome &outcome, const QString &path) const
    {
        EXPECT_TRUE(outcome.left.contains(u'“' + path + u'”')) << qPrintable(outcome.left);
        EXPECT_FALSE(outcome.canBeTriedAgain);
        EXPECT_THAT(DiskTree::paths(disk()), ::testing::Contains(path.toUtf8()));
    }

    const QByteArray content_ = QByteArray(3000, 'c') + "end";
};

TEST_F(InterruptedUndoTest, AJournalSaysWhatWasPlannedAndMade)
{
    createWithJournal();
    const JournalContent read = journal();
    EXPECT_EQ(read.id, QStringLiteral("id"));
    EXPECT_EQ(read.label, QStringLiteral("A preset"));
    EXPECT_FALSE(read.isTold);
    EXPECT_EQ(read.plan.target(), target());
    ASSERT_EQ(read.made.size(), read.plan.operations().size());
    for (std::size_t i = 0; i < read.made.size(); ++i)
        EXPECT_EQ(read.made[i].has_value(),
                  read.plan.operations()[i].kind != Creation::Operation::Kind::FinishFolder);
    EXPECT_EQ(read.made.back()->identity.number, DiskTree::at(disk(), "last").number);
    EXPECT_EQ(read.made.back()->mode, 0400);
}

// A note for which the disk has no room would end the program.
TEST_F(InterruptedUndoTest, AJournalHasRoomForEveryNoteBeforeTheFirst)
{
    QVariantList items;
    for (int number = 0; number < 1000; ++number)
        items.append(Items::file(QString::number(number)));
    writeJournal(plan(Items::root(items)));
    const qsizetype size = journalBytes().size();
    const auto journal = Creation::Journal::open(journalPath());
    ASSERT_TRUE(journal) << qPrintable(journal.error);
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(journalPath()).constData(), &information), 0);
    EXPECT_GE(information.st_size, size + 1000 * JournalFormat::slotSize);
    EXPECT_GE(information.st_blocks * 512, information.st_size);
}

// There a note for which the disk has no room would end the program, whatever was reserved.
TEST_F(InterruptedUndoTest, WhereReservedRoomIsNoPromiseEachNoteIsWritten)
{
    const Creation::Plan planned = plan(tree());
    const auto noted = [&](InterveningLayer &layer) {
        writeJournal(planned);
        const auto opened = Creation::Journal::open(journalPath(), layer);
        EXPECT_TRUE(opened) << qPrintable(opened.error);
        EXPECT_TRUE(Creation::execute(planned, {}, FolderLayer::real(), opened->get()).succeeded);
        EXPECT_EQ((*opened)->error(), QString());
        const JournalContent content = journal();
        EXPECT_EQ(content.made.back()->identity.number, DiskTree::at(disk(), "last").number);
        EXPECT_EQ(content.made.back()->mode, 0400);
        expectRestored(Creation::undo(content));
        return layer.made().count("pwrite");
    };
    InterveningLayer reserved;
    EXPECT_EQ(noted(reserved), 0);
    UnreservedDisk unreserved;
    EXPECT_GT(noted(unreserved), qsizetype(planned.operations().size()));
}

TEST_F(InterruptedUndoTest, ANoteThatCannotBeWrittenIsTold)
{
    const Creation::Plan planned = plan(tree());
    writeJournal(planned);
    UnreservedDisk disk;
    const auto journal = Creation::Journal::open(journalPath(), disk);
    ASSERT_TRUE(journal) << qPrintable(journal.error);
    disk.isFull = true;
    EXPECT_TRUE(Creation::execute(planned, {}, FolderLayer::real(), journal->get()).succeeded);
    EXPECT_TRUE((*journal)->error().endsWith(qt_error_string(ENOSPC))) << qPrintable((*journal)->error());
}

TEST_F(InterruptedUndoTest, WhatIsNoJournalIsRefused)
{
    createWithJournal();
    const QByteArray bytes = journalBytes();
    const qsizetype begin = JournalFormat::slotsOf(bytes.constData(), bytes.size())->begin;
    for (qsizetype size = 0; size < begin - JournalFormat::slotSize; ++size)
        EXPECT_FALSE(JournalFormat::read(bytes.first(size))) << size;
    // Bytes that were changed are refused, or are another journal; they never lead out of the target.
    for (qsizetype i = 0; i < begin; ++i) {
        QByteArray changed = bytes;
        changed[i] = char(~changed[i]);
        const auto content = JournalFormat::read(changed);
        for (const Creation::Operation &step :
             content ? content->plan.operations() : std::vector<Creation::Operation>())
            EXPECT_FALSE(step.name.contains('/'));
    }
}

TEST_F(InterruptedUndoTest, AKillAtAnyCallIsUndone)
{
    int kills = 0;
    while (isKilledAt(kills)) {
        SCOPED_TRACE(kills);
        expectRestored(Creation::undo(journal()));
        startAgain();
        ++kills;
    }
    EXPECT_GT(kills, 40);
    expectRestored(Creation::undo(journal()));
}

TEST_F(InterruptedUndoTest, AKilledUndoIsFinishedByAnother)
{
    int kills = 0;
    for (bool wasKilled = true; wasKilled; ++kills) {
        SCOPED_TRACE(kills);
        startAgain();
        ASSERT_TRUE(isKilledAt(40));
        wasKilled = ForkedProcess::isKilled([&] {
            FailingFolderLayer layer;
            layer.killingCall = kills;
            Creation::undo(journal(), layer);
        });
        expectRestored(Creation::undo(journal()));
    }
    EXPECT_GT(kills, 10);
}

TEST_F(InterruptedUndoTest, AnUndoAfterAPowerFailureRemovesWhatWasNotedAndNamesTheRest)
{
    createWithJournal();
    const QByteArray whole = journalBytes();
    const qsizetype begin = JournalFormat::slotsOf(whole.constData(), whole.size())->begin;
    int complete = 0;
    for (qsizetype size = begin; size <= whole.size(); ++size) {
        for (const bool isZeroed : {false, true}) {
            SCOPED_TRACE(size);
            startAgain();
            createWithJournal();
            QByteArray bytes = journalBytes().first(size);
            if (isZeroed)
                bytes.append(QByteArray(whole.size() - size, '\0'));
            const auto cut = JournalFormat::read(bytes);
            ASSERT_TRUE(cut.has_value());
            const Creation::InterruptedUndoOutcome outcome = Creation::undo(*cut);
            const auto paths = DiskTree::paths(disk());
            EXPECT_EQ(outcome.left.isEmpty(), paths.size() == 2) << qPrintable(outcome.left);
            complete += outcome.left.isEmpty() ? 1 : 0;
            EXPECT_EQ(DiskTree::at(disk(), "there/mine").bytes, "mine");
            // Of what was noted nothing is left but folders with something in them.
            for (std::size_t i = 0; i < cut->made.size(); ++i) {
                const QByteArray path = cut->plan.path(qsizetype(i)).toUtf8();
                const auto kind = cut->plan.operations()[i].kind;
                if (cut->made[i] && kind == Creation::Operation::Kind::MakeFile) {
                    EXPECT_THAT(paths, ::testing::Not(::testing::Contains(path)));
                }
            }
        }
    }
    EXPECT_GT(complete, 2);
}

TEST_F(InterruptedUndoTest, AnyNoteThatIsLostLeavesOnlyWhatItWasAbout)
{
    createWithJournal();
    const std::size_t notes = journal().made.size();
    for (std::size_t lost = 0; lost < notes; ++lost) {
        SCOPED_TRACE(lost);
        startAgain();
        createWithJournal();
        JournalContent content = journal();
        if (!content.made[lost] ||
            content.plan.operations()[lost].kind == Creation::Operation::Kind::UseFolder)
            continue;
        content.made[lost].reset();
        const Creation::InterruptedUndoOutcome outcome = Creation::undo(content);
        // The last one is what came next.
        if (lost + 1 == notes)
            expectRestored(outcome);
        else
            expectLeft(outcome, content.plan.path(qsizetype(lost)));
    }
}

TEST_F(InterruptedUndoTest, AFileThatThePowerFailureEmptiedIsRemoved)
{
    createWithJournal();
    ASSERT_TRUE(QFile::resize(inTarget(QStringLiteral("there/new")), 0));
    expectRestored(Creation::undo(journal()));
}

TEST_F(InterruptedUndoTest, WhatTheUserChangedOrAddedStaysAndIsNamed)
{
    createWithJournal();
    put(inTarget(QStringLiteral("there/new")), "the user's");
    put(inTarget(QStringLiteral("empty/added")), "the user's");
    const Creation::InterruptedUndoOutcome outcome = Creation::undo(journal());
    EXPECT_TRUE(outcome.left.contains(u"“empty” was left")) << qPrintable(outcome.left);
    EXPECT_TRUE(outcome.left.contains(u"1 more")) << qPrintable(outcome.left);
    EXPECT_THAT(DiskTree::paths(disk()),
                ElementsAre("empty", "empty/added", "there", "there/mine", "there/new"));
}

TEST_F(InterruptedUndoTest, WhatTookThePlaceOfSomethingStaysAndIsNamed)
{
    createWithJournal();
    ASSERT_TRUE(QFile::rename(inTarget(QStringLiteral("last")), outside() + QStringLiteral("/last")));
    put(inTarget(QStringLiteral("last")), "the user's");
    expectLeft(Creation::undo(journal()), QStringLiteral("last"));
}

TEST_F(InterruptedUndoTest, WhatCameNextIsRemovedOnlyIfItCanBeTheCreations)
{
    const QString next = inTarget(QStringLiteral("there/new"));
    const auto contentBefore = [this] {
        startAgain();
        // As if it had come to nothing but the first file, and noted nothing of that.
        writeJournal(plan(tree()));
        return journal();
    };
    for (const QByteArray &beginning : {QByteArray(), content_.first(1), content_.first(3000), content_}) {
        const JournalContent content = contentBefore();
        put(next, beginning);
        expectRestored(Creation::undo(content));
    }
    for (const QByteArray &other : {QByteArray("x"), content_ + 'x', content_.first(2999) + 'x'}) {
        const JournalContent content = contentBefore();
        put(next, other);
        expectLeft(Creation::undo(content), QStringLiteral("there/new"));
    }
    JournalContent older = contentBefore();
    put(next, {});
    older.begun += qint64(3600) * 1'000'000'000;
    expectLeft(Creation::undo(older), QStringLiteral("there/new"));

    const JournalContent exchanged = contentBefore();
    put(next, content_.first(1));
    put(contentFolder() + QStringLiteral("/other"), content_);
    ASSERT_EQ(::rename(QFile::encodeName(contentFolder() + QStringLiteral("/other")).constData(),
                       QFile::encodeName(contentFolder() + QStringLiteral("/content")).constData()),
              0);
    expectLeft(Creation::undo(exchanged), QStringLiteral("there/new"));
}

TEST_F(InterruptedUndoTest, AClosedFileIsReadAndStaysClosedIfItIsNotTheCreations)
{
    const QByteArray root = QFile::encodeName(QFileInfo(target()).path());
    ASSERT_EQ(::chmod(root.constData(), 0755), 0);
    ForkedProcess::runAsOrdinaryUser(
        {QFile::encodeName(target()), QFile::encodeName(inTarget(QStringLiteral("there"))),
         QFile::encodeName(outside())},
        [this] {
            createWithJournal();
            JournalContent content = journal();
            for (std::size_t i = 0; i < content.made.size(); ++i) {
                // All from the file in the folder on was not noted.
                if (content.plan.path(qsizetype(i)) == QStringLiteral("folder/a"))
                    std::for_each(content.made.begin() + std::ptrdiff_t(i), content.made.end(),
                                  [](auto &made) { made.reset(); });
            }
            for (const QString &name : {QStringLiteral("empty"), QStringLiteral("last")})
                EXPECT_EQ(::remove(QFile::encodeName(inTarget(name)).constData()), 0);
            expectRestored(Creation::undo(content));
        });
}

TEST_F(InterruptedUndoTest, ATargetThatIsNotThereOrAnotherOneCanBeTriedAgain)
{
    createWithJournal();
    const QString moved = outside() + QStringLiteral("/moved");
    ASSERT_TRUE(QFile::rename(target(), moved));
    EXPECT_TRUE(Creation::undo(journal()).canBeTriedAgain);
    makeFolder(target());
    EXPECT_TRUE(Creation::undo(journal()).canBeTriedAgain);
    ASSERT_EQ(::rmdir(QFile::encodeName(target()).constData()), 0);
    ASSERT_TRUE(QFile::rename(moved, target()));
    expectRestored(Creation::undo(journal()));
}
