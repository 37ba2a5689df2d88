// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Undos that are killed at each of their calls, and what another one makes of what they leave.

#include "CreationFixture.h"
#include "FailingFolderLayer.h"
#include "ForkedProcess.h"

#include <QDir>
#include <QFile>
#include <functional>

using Creation::EarlierUndo;

class KilledUndoTest : public CreationFixture
{
protected:
    /// A folder that was there, one that is locked, and a file that is the first to be removed.
    static QNBHierarchyItemPtr tree()
    {
        return Items::root({
            Items::folder(QStringLiteral("there"), {Items::file(QStringLiteral("new"))}),
            Items::folder(QStringLiteral("folder"),
                          {Items::folder(QStringLiteral("inner"), {Items::file(QStringLiteral("deep"))},
                                         {QStringLiteral("500"), {}, {}}),
                           Items::file(QStringLiteral("beside"))},
                          {QStringLiteral("400"), {}, {}}),
            Items::folder(QStringLiteral("users"), {Items::file(QStringLiteral("in the user's"))}),
            Items::file(QStringLiteral("last")),
        });
    }

    /// Calls \a check after each kill.
    void killAtEachCall(const std::function<void(const Creation::Record &)> &check)
    {
        bool wasKilled = true;
        int kills = 0;
        for (; wasKilled; ++kills) {
            SCOPED_TRACE(kills);
            DiskTree::clear(target());
            makeFolder(inTarget(QStringLiteral("users")));
            makeFolder(inTarget(QStringLiteral("there")));
            put(inTarget(QStringLiteral("there/mine")), "mine");
            before_ = DiskTree::paths(disk());
            const Creation::Record record = create(tree());
            wasKilled = ForkedProcess::isKilled([&] {
                FailingFolderLayer layer;
                layer.killingCall = kills;
                EXPECT_TRUE(Creation::undo(record, layer).succeeded);
            });
            check(record);
        }
        EXPECT_GT(kills, 30);
    }

    void expectRefusal(const Creation::Record &record)
    {
        const auto present = disk();
        const Creation::UndoOutcome outcome = Creation::undo(record, EarlierUndo::Unfinished);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_FALSE(outcome.error.isEmpty());
        EXPECT_FALSE(outcome.rest.has_value());
        EXPECT_EQ(disk(), present);
    }

    void expectSuccess(const Creation::Record &record)
    {
        const Creation::UndoOutcome outcome = Creation::undo(record, EarlierUndo::Unfinished);
        EXPECT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
        EXPECT_EQ(DiskTree::paths(disk()), before_);
    }

    bool exists(const QString &path) const { return QFile::exists(inTarget(path)); }

    std::vector<QByteArray> before_;
};

TEST_F(KilledUndoTest, ASecondOneFinishesIt)
{
    killAtEachCall([this](const Creation::Record &record) { expectSuccess(record); });
}

TEST_F(KilledUndoTest, ASecondOneThatIsKilledTooIsFinishedByTheThird)
{
    int kills = 0;
    killAtEachCall([&](const Creation::Record &record) {
        kills += ForkedProcess::isKilled([&] {
            FailingFolderLayer layer;
            layer.killingCall = 60;
            EXPECT_TRUE(Creation::undo(record, layer, EarlierUndo::Unfinished).succeeded);
        });
        expectSuccess(record);
    });
    EXPECT_GT(kills, 10);
}

TEST_F(KilledUndoTest, WhatTheUserAddedMeanwhileIsLeftWithAllTheRest)
{
    int refusals = 0;
    killAtEachCall([&](const Creation::Record &record) {
        if (exists(QStringLiteral("folder"))) {
            const QString added = inTarget(QStringLiteral("folder/added"));
            put(added, "added");
            expectRefusal(record);
            ++refusals;
            const OpenedFolder folder(inTarget(QStringLiteral("folder")));
            EXPECT_TRUE(QFile::remove(added));
        }
        expectSuccess(record);
    });
    EXPECT_GT(refusals, 10);
}

TEST_F(KilledUndoTest, WhatTheUserPutInThePlaceOfSomethingRemovedIsLeftWithAllTheRest)
{
    int refusals = 0;
    killAtEachCall([&](const Creation::Record &record) {
        const QString removed = inTarget(QStringLiteral("last"));
        if (!QFile::exists(removed)) {
            put(removed, "the user's");
            expectRefusal(record);
            ++refusals;
            EXPECT_TRUE(QFile::remove(removed));
        }
        expectSuccess(record);
    });
    EXPECT_GT(refusals, 10);
}

TEST_F(KilledUndoTest, WhatTheUserChangedMeanwhileIsLeftWithAllTheRest)
{
    int refusals = 0;
    killAtEachCall([&](const Creation::Record &record) {
        if (!exists(QStringLiteral("there/new"))) {
            expectSuccess(record);
            return;
        }
        put(inTarget(QStringLiteral("there/new")), "changed");
        expectRefusal(record);
        ++refusals;
    });
    EXPECT_GT(refusals, 10);
}

TEST_F(KilledUndoTest, WhatTheUserRemovedMeanwhileIsNotTakenForTheWorkOfTheFirst)
{
    int refusals = 0;
    killAtEachCall([&](const Creation::Record &record) {
        if (!exists(QStringLiteral("folder"))) {
            expectSuccess(record);
            return;
        }
        EXPECT_TRUE(QFile::remove(inTarget(QStringLiteral("there/new"))));
        expectRefusal(record);
        ++refusals;
    });
    EXPECT_GT(refusals, 10);
}

TEST_F(KilledUndoTest, AFolderThatWasThereAndIsGoneIsNotTakenForTheWorkOfTheFirst)
{
    int refusals = 0;
    killAtEachCall([&](const Creation::Record &record) {
        EXPECT_TRUE(QFile::rename(inTarget(QStringLiteral("there")), inTarget(QStringLiteral("moved"))));
        expectRefusal(record);
        ++refusals;
    });
    EXPECT_GT(refusals, 10);
}

TEST_F(KilledUndoTest, AModeThatNoUndoGivesRefuses)
{
    const Creation::Record record = create(tree());
    ASSERT_TRUE(
        QFile::setPermissions(inTarget(QStringLiteral("folder")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther));
    expectRefusal(record);
}
