// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A disk that is full at each operation in turn, and one that nothing can be written to.

#include "CreationFixture.h"
#include "ForkedProcess.h"
#include "ShortDisk.h"
#include "Tests/Session/SmallDisk.h"

using ::testing::IsEmpty;

class FullDiskTest : public CreationFixture
{
protected:
    static constexpr int folders = 5;
    static constexpr int filesPerFolder = 3;
    static constexpr int pagesPerFile = 3;
    static constexpr qint64 pageSize = 4096;

    void SetUp() override
    {
        put(contentFolder() + QStringLiteral("/content"), QByteArray(pagesPerFile * pageSize, 'c'));
    }

    /// Into folders that are there and new ones.
    static QNBHierarchyItemPtr tree()
    {
        QVariantList children;
        for (int i = 0; i < folders; ++i) {
            QVariantList files;
            for (int j = 0; j < filesPerFolder; ++j)
                files.append(
                    Items::file(QStringLiteral("file%1").arg(j),
                                {QStringLiteral("640"), QStringLiteral("red"), QStringLiteral("content")}));
            children.append(Items::folder(QStringLiteral("folder%1").arg(i), files,
                                          {QStringLiteral("510"), QStringLiteral("blue"), {}}));
        }
        return Items::root(children);
    }

    void fillTarget() const
    {
        makeFolder(inTarget(QStringLiteral("folder1")));
        put(inTarget(QStringLiteral("folder1/mine")), "mine");
    }

    /// Executes a plan while there is \a room room, more and more until it is enough, which \a least is not.
    void createWithMoreAndMoreRoom(SmallDisk &disk, const std::function<bool(int room)> &fill, int least)
    {
        bool hasSucceeded = false;
        for (int room = 0; !hasSucceeded; ++room) {
            const Creation::Plan planned = plan(tree());
            ASSERT_THAT(planned.problems(), IsEmpty());
            ASSERT_TRUE(fill(room));
            const auto before = this->disk();
            const Creation::Outcome outcome = Creation::execute(planned, {}, layer_);
            hasSucceeded = outcome.succeeded;
            if (!hasSucceeded) {
                EXPECT_FALSE(outcome.error.isEmpty());
                EXPECT_EQ(this->disk(), before) << room;
            }
            EXPECT_TRUE(hasSucceeded ? room > least : room < 10 * least) << room;
            ASSERT_TRUE(disk.clear());
        }
    }

    /// Where no disk can be mounted, it stands in for one.
    ShortDisk layer_;
};

TEST_F(FullDiskTest, NoRoomForBytesAtEachFileInTurn)
{
    ForkedProcess::run([&] {
        SmallDisk disk(target());
        fillTarget();
        // Without a disk of its own there is a limit for each file.
        const int least = disk.isMounted() ? folders * filesPerFolder * pagesPerFile - 1 : pagesPerFile - 1;
        createWithMoreAndMoreRoom(
            disk, [&](int pages) { return disk.fill(pages * pageSize); }, least);
    });
}

TEST_F(FullDiskTest, NoRoomForAnEntryAtEachOperationInTurn)
{
    ForkedProcess::run([&] {
        SmallDisk disk(target());
        fillTarget();
        // A label may take as much as an entry.
        const int least = folders - 1 + folders * filesPerFolder - 1;
        createWithMoreAndMoreRoom(
            disk,
            [&](int entries) {
                layer_.room = disk.isMounted() ? layer_.room : entries;
                return !disk.isMounted() || disk.fillEntries(entries);
            },
            least);
    });
}

TEST_F(FullDiskTest, ADiskThatMayNotBeWrittenIsAProblemAndLaterAFailure)
{
    ForkedProcess::run([&] {
        SmallDisk disk(target());
        fillTarget();
        const Creation::Plan planned = plan(tree());
        const Creation::Record record = create(tree());
        const auto before = this->disk();
        layer_.isReadOnly = !disk.isMounted();
        ASSERT_TRUE(!disk.isMounted() || disk.makeReadOnly());
        const Creation::Outcome outcome = Creation::execute(planned, {}, layer_);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_FALSE(Creation::undo(record, layer_).succeeded);
        const QNBHierarchyItemPtr one = Items::root({Items::file(QStringLiteral("a"))});
        EXPECT_FALSE(Creation::plan(*one, target(), options(), layer_).canBeExecuted());
        EXPECT_EQ(this->disk(), before);
    });
}
