// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Others at work in the target at the same time.

#include "CreationFixture.h"
#include "Platform/Files/FolderLayer.h"

#include <QFile>
#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <set>
#include <thread>
#include <unistd.h>

using ::testing::IsEmpty;

namespace {

/// Puts a link in the place of a folder and the folder in the place of the link, over and over.
class Swapper
{
public:
    Swapper(const QString &folder, const QString &link)
        : thread_([this, folder = QFile::encodeName(folder), link = QFile::encodeName(link)] {
            while (!isEnding_) {
                if (::renameat2(AT_FDCWD, folder.constData(), AT_FDCWD, link.constData(), RENAME_EXCHANGE) ==
                    0)
                    ++swaps_;
            }
        })
    {
    }
    ~Swapper()
    {
        isEnding_ = true;
        thread_.join();
    }
    Swapper(const Swapper &) = delete;
    Swapper &operator=(const Swapper &) = delete;

    int swaps() const { return swaps_; }

private:
    std::atomic<bool> isEnding_ = false;
    std::atomic<int> swaps_ = 0;
    std::thread thread_;
};

QNBHierarchyItemPtr treeIn(const QString &folder)
{
    QVariantList files;
    for (int i = 0; i < 20; ++i)
        files.append(Items::file(QStringLiteral("file%1").arg(i)));
    return Items::root({Items::folder(
        folder, {Items::folder(QStringLiteral("inner"), files), Items::file(QStringLiteral("file"))})});
}

/// Puts a link in the place of each folder, at the moment at which it has been made.
class PlantingLayer : public FolderLayer
{
public:
    explicit PlantingLayer(const QString &elsewhere)
        : elsewhere_(QFile::encodeName(elsewhere))
    {
    }

    int mkdirat(int folder, const char *name, mode_t mode) override
    {
        const int result = FolderLayer::mkdirat(folder, name, mode);
        EXPECT_EQ(::renameat(folder, name, folder, "aside"), 0);
        EXPECT_EQ(::symlinkat(elsewhere_.constData(), folder, name), 0);
        return result;
    }

private:
    const QByteArray elsewhere_;
};

constexpr int enoughRuns = 20;
constexpr int mostRuns = 1000;

} // namespace

class RaceTest : public CreationFixture
{
protected:
    /// Creates until there were failures and successes enough.
    void createWhileSwapped(const QString &folder)
    {
        makeLink(inTarget(QStringLiteral("link")), outside());
        const auto before = DiskTree::read(outside());
        const auto pathsBefore = DiskTree::paths(disk());
        int failed = 0;
        int succeeded = 0;
        int swaps = 0;
        bool hasToldOfRemains = false;
        {
            const Swapper swapper(inTarget(folder), inTarget(QStringLiteral("link")));
            for (int run = 0; run < mostRuns && (failed < enoughRuns || succeeded < enoughRuns); ++run) {
                const Creation::Plan planned = plan(treeIn(folder));
                const Creation::Outcome outcome = Creation::execute(planned);
                (outcome.succeeded ? succeeded : failed) += 1;
                const Creation::UndoOutcome undone =
                    outcome.succeeded ? Creation::undo(outcome.record) : Creation::UndoOutcome{true, {}};
                hasToldOfRemains = hasToldOfRemains || !undone.succeeded || outcome.error.contains(u"left");
            }
            swaps = swapper.swaps();
        }
        EXPECT_GT(swaps, 0);
        EXPECT_GT(failed + succeeded, enoughRuns);
        EXPECT_EQ(DiskTree::read(outside()), before);
        if (!hasToldOfRemains) {
            EXPECT_EQ(DiskTree::paths(disk()), pathsBefore);
        }
    }
};

TEST_F(RaceTest, NothingIsCreatedThroughALinkInThePlaceOfAFolderThatIsThere)
{
    makeFolder(inTarget(QStringLiteral("folder")));
    createWhileSwapped(QStringLiteral("folder"));
}

TEST_F(RaceTest, NothingIsCreatedThroughALinkInThePlaceOfANewFolder)
{
    createWhileSwapped(QStringLiteral("new"));
}

TEST_F(RaceTest, ALinkPlantedAsSoonAsAFolderWasMadeIsNotFollowed)
{
    const Creation::Plan planned = plan(treeIn(QStringLiteral("new")));
    const auto before = DiskTree::read(outside());
    PlantingLayer layer(outside());
    const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_TRUE(outcome.error.contains(u"left")) << qPrintable(outcome.error);
    EXPECT_THAT(DiskTree::paths(disk()), ::testing::ElementsAre("aside", "new"));
    EXPECT_EQ(DiskTree::read(outside()), before);
}

TEST_F(RaceTest, OfTwoRunsOfOnePlanOneSucceeds)
{
    for (int round = 0; round < 50; ++round) {
        const Creation::Plan planned = plan(treeIn(QStringLiteral("folder")));
        Creation::Outcome first;
        std::thread other([&] { first = Creation::execute(planned); });
        const Creation::Outcome second = Creation::execute(planned);
        other.join();
        EXPECT_NE(first.succeeded, second.succeeded);
        EXPECT_EQ(DiskTree::paths(disk()).size(), 23u);
        EXPECT_TRUE(Creation::undo(first.succeeded ? first.record : second.record).succeeded);
        EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
    }
}

TEST_F(RaceTest, TwoCreationsInOneFolderEachSucceedOrLeaveNothing)
{
    makeFolder(inTarget(QStringLiteral("there")));
    for (int round = 0; round < 50; ++round) {
        const auto treeOf = [](const QStringList &names) {
            QVariantList children;
            for (const QString &name : names)
                children.append(Items::folder(name, {Items::file(QStringLiteral("file"))}));
            return Items::root({Items::folder(QStringLiteral("there"), children)});
        };
        const QStringList forwards = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
        const QStringList backwards = {QStringLiteral("x"), QStringLiteral("c"), QStringLiteral("y")};
        const Creation::Plan firstPlan = plan(treeOf(forwards));
        const Creation::Plan secondPlan = plan(treeOf(backwards));
        Creation::Outcome first;
        std::thread other([&] { first = Creation::execute(firstPlan); });
        const Creation::Outcome second = Creation::execute(secondPlan);
        other.join();
        std::set<QByteArray> expected{"there"};
        const auto expect = [&expected](const Creation::Outcome &outcome, const QStringList &names) {
            for (const QString &name : outcome.succeeded ? names : QStringList()) {
                expected.insert("there/" + name.toUtf8());
                expected.insert("there/" + name.toUtf8() + "/file");
            }
        };
        expect(first, forwards);
        expect(second, backwards);
        EXPECT_FALSE(first.succeeded && second.succeeded);
        EXPECT_THAT(DiskTree::paths(disk()), ::testing::ElementsAreArray(expected));
        DiskTree::clear(inTarget(QStringLiteral("there")));
    }
}
