// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"
#include "FailingFolderLayer.h"
#include "ForkedProcess.h"

#include <functional>

using ::testing::IsSupersetOf;

class KillTest : public CreationFixture
{
protected:
    void SetUp() override { put(contentFolder() + QStringLiteral("/content"), QByteArray(5000, 'c')); }

    static QNBHierarchyItemPtr tree()
    {
        return Items::root({
            Items::folder(
                QStringLiteral("there"),
                {Items::file(QStringLiteral("mine"), {QStringLiteral("640"), {}, QStringLiteral("content")}),
                 Items::file(QStringLiteral("new"))}),
            Items::folder(QStringLiteral("folder"),
                          {Items::folder(QStringLiteral("inner"), {Items::file(QStringLiteral("deep"))},
                                         {QStringLiteral("700"), QStringLiteral("red"), {}})},
                          {QStringLiteral("750"), {}, {}}),
            Items::file(QStringLiteral("last"), {QStringLiteral("400"), QStringLiteral("red"), {}}),
        });
    }

    /// Has \a run, with a layer, killed at each of its calls in turn, each time after \a prepare. Expects
    /// that nothing of the user's is touched by that, and that a creation completes afterwards.
    void killAtEachCall(
        const std::function<void(FolderLayer &)> &run, const std::function<void()> &prepare = [] {})
    {
        bool wasKilled = true;
        int kills = 0;
        for (; wasKilled; ++kills) {
            DiskTree::clear(target());
            makeFolder(inTarget(QStringLiteral("there")));
            put(inTarget(QStringLiteral("there/mine")), "mine");
            const auto users = disk();
            prepare();
            wasKilled = ForkedProcess::isKilled([&] {
                FailingFolderLayer layer;
                layer.killingCall = kills;
                run(layer);
            });
            const auto killed = disk();
            EXPECT_EQ(DiskTree::at(killed, "there/mine"), DiskTree::at(users, "there/mine"));
            EXPECT_EQ(DiskTree::at(killed, "there").mode, DiskTree::at(users, "there").mode);
            EXPECT_EQ(DiskTree::at(killed, ".").mode, DiskTree::at(users, ".").mode);

            const Creation::Record record = create(tree());
            const auto after = disk();
            EXPECT_THAT(DiskTree::paths(after), IsSupersetOf(DiskTree::paths(killed)));
            EXPECT_EQ(DiskTree::at(after, "there/mine"), DiskTree::at(users, "there/mine"));
            // What the killed run left has taken the names of some.
            int files = 0;
            for (qsizetype i = 0; i < qsizetype(record.entries.size()); ++i) {
                if (record.entries[std::size_t(i)].kind != Creation::Record::Entry::Kind::File)
                    continue;
                ++files;
                const DiskEntry file = DiskTree::at(after, record.path(i).toUtf8());
                EXPECT_EQ(file.bytes.size(), file.path.contains("mine") ? 5000 : 0);
            }
            EXPECT_EQ(files, 4);
        }
        EXPECT_GT(kills, 30);
    }
};

TEST_F(KillTest, AKillAtAnyCallTouchesNothingOfTheUsersAndASecondRunCompletes)
{
    killAtEachCall([this](FolderLayer &layer) {
        const Creation::Plan planned = Creation::plan(*tree(), target(), options());
        EXPECT_TRUE(Creation::execute(planned, {}, layer).succeeded);
    });
}

TEST_F(KillTest, AKillAtAnyCallOfARunThatFailsTouchesNothingOfTheUsersAndASecondRunCompletes)
{
    killAtEachCall([this](FolderLayer &layer) {
        const auto before = disk();
        const Creation::Plan planned = Creation::plan(*tree(), target(), options());
        const auto untilTheLast = [](qsizetype done, qsizetype total) { return done < total; };
        EXPECT_TRUE(Creation::execute(planned, untilTheLast, layer).cancelled);
        EXPECT_EQ(disk(), before);
    });
}

TEST_F(KillTest, AKillAtAnyCallOfAnUndoTouchesNothingOfTheUsersAndASecondRunCompletes)
{
    Creation::Record record;
    killAtEachCall([&](FolderLayer &layer) { EXPECT_TRUE(Creation::undo(record, layer).succeeded); },
                   [&] { record = create(tree()); });
}
