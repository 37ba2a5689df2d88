// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"
#include "FailingFolderLayer.h"
#include "ForkedProcess.h"

using ::testing::IsSupersetOf;

class KillTest : public CreationFixture
{
};

TEST_F(KillTest, AKillAtAnyCallTouchesNothingOfTheUsersAndASecondRunCompletes)
{
    put(contentFolder() + QStringLiteral("/content"), QByteArray(5000, 'c'));
    const QNBHierarchyItemPtr tree = Items::root({
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
    const auto startAgain = [this] {
        DiskTree::clear(target());
        makeFolder(inTarget(QStringLiteral("there")));
        put(inTarget(QStringLiteral("there/mine")), "mine");
    };
    bool wasKilled = true;
    int kills = 0;
    for (; wasKilled; ++kills) {
        startAgain();
        const auto before = disk();
        wasKilled = ForkedProcess::isKilled([&] {
            FailingFolderLayer layer;
            layer.killingCall = kills;
            const Creation::Outcome outcome =
                Creation::execute(Creation::plan(*tree, target(), options()), {}, layer);
            EXPECT_TRUE(outcome.succeeded);
        });
        const auto killed = disk();
        EXPECT_EQ(DiskTree::at(killed, "there/mine"), DiskTree::at(before, "there/mine"));
        EXPECT_EQ(DiskTree::at(killed, "there").mode, DiskTree::at(before, "there").mode);

        const Creation::Record record = create(tree);
        const auto after = disk();
        EXPECT_THAT(DiskTree::paths(after), IsSupersetOf(DiskTree::paths(killed)));
        EXPECT_EQ(DiskTree::at(after, "there/mine"), DiskTree::at(before, "there/mine"));
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
