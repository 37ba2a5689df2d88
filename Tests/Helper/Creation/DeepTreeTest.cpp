// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Trees deeper than any path is long.

#include "CreationFixture.h"
#include "ForkedProcess.h"
#include "Source/Model/QNBHierarchyDepth.h"

#include <QFile>
#include <algorithm>
#include <sys/resource.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr int manyLevels = 1000;

/// A folder in each folder, and a file beside it.
QNBHierarchyItemPtr deepTree(int depth, const QVariantMap &permissions)
{
    const QNBHierarchyItemPtr root = Items::root({});
    QNBHierarchyItemPtr folder = root;
    for (int level = 0; level < depth; ++level) {
        const auto add = [&](const QVariantMap &dictionary) {
            const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(dictionary);
            item->setCustomPermissions(permissions);
            folder->addChild(item);
            return item;
        };
        const QNBHierarchyItemPtr inner = add(Items::folder(QStringLiteral("folder%1").arg(level)));
        add(Items::file(QStringLiteral("file")));
        folder = inner;
    }
    return root;
}

QVariantMap digits(int owner, int group, int others)
{
    return {{QStringLiteral("u"), owner}, {QStringLiteral("g"), group}, {QStringLiteral("o"), others}};
}

/// A limit on open files, for a while.
class FewDescriptors
{
public:
    explicit FewDescriptors(rlim_t most)
    {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit limit = {most, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    FewDescriptors(const FewDescriptors &) = delete;
    FewDescriptors &operator=(const FewDescriptors &) = delete;

private:
    rlimit before_ = {};
};

} // namespace

class DeepTreeTest : public CreationFixture
{
protected:
    /// Creates, cancels, creates again into what is there, and undoes both.
    void createAndUndo(const QVariantMap &permissions, mode_t mode, bool again)
    {
        const QNBHierarchyItemPtr root = deepTree(manyLevels, permissions);
        std::vector<Creation::Record> records;
        const auto before = disk();
        {
            const FewDescriptors few(128);
            const Creation::Plan planned = plan(root);
            const auto total = qsizetype(planned.operations().size());
            const Creation::Outcome cancelled =
                Creation::execute(planned, [&](qsizetype done, qsizetype) { return done < total; });
            EXPECT_TRUE(cancelled.cancelled);
            EXPECT_EQ(cancelled.error, QStringLiteral("cancelled"));
        }
        EXPECT_EQ(disk(), before);
        {
            const FewDescriptors few(128);
            records.push_back(create(root));
            if (again)
                records.push_back(create(root));
        }
        const auto entries = disk();
        EXPECT_EQ(entries.size(), 1u + manyLevels * (again ? 3 : 2));
        EXPECT_TRUE(std::all_of(entries.begin() + 1, entries.end(),
                                [&](const DiskEntry &entry) { return entry.permissions() == mode; }));
        EXPECT_EQ(std::max_element(
                      entries.begin(), entries.end(),
                      [](const auto &a, const auto &b) { return a.path.count('/') < b.path.count('/'); })
                      ->path.count('/'),
                  manyLevels - 1);
        const FewDescriptors few(128);
        for (; !records.empty(); records.pop_back()) {
            const Creation::UndoOutcome undone = Creation::undo(records.back());
            EXPECT_TRUE(undone.succeeded) << qPrintable(undone.error);
        }
    }
};

TEST_F(DeepTreeTest, AThousandLevelsAreCreatedAndUndone)
{
    createAndUndo(digits(7, 5, 0), 0750, true);
    EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
}

TEST_F(DeepTreeTest, AThousandLevelsThatTheirOwnerMayNotEnterAreCreatedAndUndone)
{
    const QByteArray folder = QFile::encodeName(target());
    const QByteArray root = QFile::encodeName(QFileInfo(target()).path());
    ASSERT_EQ(::chmod(root.constData(), 0755), 0);
    ForkedProcess::runAsOrdinaryUser({folder}, [&] { createAndUndo(digits(0, 5, 0), 0050, false); });
    EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
}

TEST_F(DeepTreeTest, TheDeepestTreeThatCanBeStoredIsCreatedAndADeeperOneIsAProblem)
{
    const Creation::Plan deepest = plan(deepTree(QNBHierarchyDepth::deepest, digits(7, 5, 0)));
    EXPECT_TRUE(deepest.canBeExecuted());
    const Creation::Outcome outcome = Creation::execute(deepest);
    ASSERT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
    EXPECT_TRUE(Creation::undo(outcome.record).succeeded);
    EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());

    const Creation::Plan deeper = plan(deepTree(QNBHierarchyDepth::deepest + 1, digits(7, 5, 0)));
    EXPECT_FALSE(deeper.canBeExecuted());
    ASSERT_EQ(deeper.problems().size(), 1);
    EXPECT_LT(deeper.problems().constFirst().path.size(), 3000);
}

TEST_F(DeepTreeTest, ATreeThatGoesInACircleIsAProblem)
{
    const QNBHierarchyItemPtr root = Items::root({Items::folder(QStringLiteral("folder"))});
    const QNBHierarchyItemPtr folder = root->children().front();
    folder->setChildren({folder, folder});
    const Creation::Plan planned = plan(root);
    EXPECT_FALSE(planned.canBeExecuted());
    folder->setChildren({});
}

TEST_F(DeepTreeTest, TheLinesOfADeepTreeStayShort)
{
    const QStringList lines = plan(deepTree(QNBHierarchyDepth::deepest, digits(7, 5, 0))).lines();
    EXPECT_TRUE(
        std::all_of(lines.begin(), lines.end(), [](const QString &line) { return line.size() < 3000; }));
    EXPECT_TRUE(lines.at(lines.size() / 2).contains(u"…/"));
}
