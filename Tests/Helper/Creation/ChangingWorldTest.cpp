// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What somebody exchanges between two calls is not taken for what was looked at before.

#include "CreationFixture.h"
#include "Helper/Creation/FolderChain.h"
#include "Tests/Platform/Files/InterveningLayer.h"

#include <QFile>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// More levels than are open at a time, so that some are opened again from below.
constexpr int levels = int(Creation::FolderChain::mostOpen) + 8;
/// One of those whose folder above is no longer open when the deepest one is reached.
constexpr int movedLevel = 5;

QString nameOf(int level)
{
    return QStringLiteral("level %1").arg(level);
}

/// A folder in a folder, and so on; beside each one a file that comes after it.
QVariantList deepChildren()
{
    QVariantList children;
    for (int level = levels; level > 0; --level)
        children = {Items::folder(nameOf(level), children), Items::file(QStringLiteral("after"))};
    return children;
}

QString pathOf(int level)
{
    QStringList names;
    for (int i = 1; i <= level; ++i)
        names.append(nameOf(i));
    return names.join(u'/');
}

} // namespace

class ChangingWorldTest : public CreationFixture
{
protected:
    static QNBHierarchyItemPtr newFile() { return Items::root({Items::file(QStringLiteral("new"))}); }

    static void move(const QString &from, const QString &to)
    {
        EXPECT_EQ(::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()), 0)
            << qPrintable(from);
    }
    static void expectOtherPlaceTold(const QString &error)
    {
        EXPECT_TRUE(error.contains(u"something else has taken its place")) << qPrintable(error);
    }

    QString elsewhere() const { return outside() + QStringLiteral("/moved"); }
};

TEST_F(ChangingWorldTest, ATargetThatVanishesFails)
{
    const Creation::Plan planned = plan(newFile());
    move(target(), elsewhere());
    const auto expectFailure = [&](const QString &reason) {
        const Creation::Outcome outcome = Creation::execute(planned);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_TRUE(outcome.error.contains(reason)) << qPrintable(outcome.error);
        EXPECT_THAT(DiskTree::paths(DiskTree::read(elsewhere())), IsEmpty());
    };
    expectFailure(QStringLiteral("No such file"));
    makeLink(target(), elsewhere());
    expectFailure(QStringLiteral("Not a directory"));
    ASSERT_TRUE(QFile::remove(target()));
    put(target(), "a file");
    expectFailure(QStringLiteral("Not a directory"));
    ASSERT_TRUE(QFile::remove(target()));
    makeFolder(target());
    expectFailure(QStringLiteral("something else has taken its place"));
    EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
}

TEST_F(ChangingWorldTest, ATargetExchangedForALinkWhileItIsPlannedIsAProblem)
{
    InterveningLayer layer;
    layer.before("open", 0, [&] {
        move(target(), elsewhere());
        makeLink(target(), outside());
    });
    EXPECT_FALSE(Creation::plan(*newFile(), target(), options(), layer).canBeExecuted());
}

TEST_F(ChangingWorldTest, NothingIsUndoneInAnotherFolderInThePlaceOfTheTarget)
{
    const Creation::Record record = create(newFile());
    move(target(), elsewhere());
    makeFolder(target());
    // Even what was made, and would be removed.
    move(elsewhere() + QStringLiteral("/new"), inTarget(QStringLiteral("new")));
    const Creation::UndoOutcome undone = Creation::undo(record);
    EXPECT_FALSE(undone.succeeded);
    EXPECT_TRUE(undone.error.contains(u"another folder")) << qPrintable(undone.error);
    EXPECT_THAT(DiskTree::paths(disk()), ElementsAre("new"));
}

TEST_F(ChangingWorldTest, AFolderThatWasThereAndIsAnotherOneIsNotCreatedIn)
{
    const QString there = inTarget(QStringLiteral("there"));
    makeFolder(there);
    const Creation::Plan planned =
        plan(Items::root({Items::folder(QStringLiteral("there"), {Items::file(QStringLiteral("new"))})}));
    move(there, elsewhere());
    makeFolder(there);
    const Creation::Outcome outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    expectOtherPlaceTold(outcome.error);
    EXPECT_THAT(DiskTree::paths(disk()), ElementsAre("there"));
    EXPECT_THAT(DiskTree::paths(DiskTree::read(elsewhere())), IsEmpty());
}

TEST_F(ChangingWorldTest, NothingIsCreatedAboveTheNewPlaceOfAFolderThatIsMoved)
{
    const Creation::Plan planned = plan(Items::root(deepChildren()));
    InterveningLayer layer;
    // Before the deepest one is made.
    layer.before("mkdirat", levels - 1, [&] { move(inTarget(pathOf(movedLevel)), elsewhere()); });
    const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
    EXPECT_FALSE(outcome.succeeded);
    expectOtherPlaceTold(outcome.error);
    EXPECT_FALSE(QFile::exists(outside() + QStringLiteral("/after")));
}

TEST_F(ChangingWorldTest, NothingIsUndoneAboveTheNewPlaceOfAFolderThatIsMoved)
{
    const Creation::Record record = create(Items::root(deepChildren()));
    const QString moved = outside() + u'/' + nameOf(movedLevel);
    InterveningLayer layer;
    // When all files are gone, and the deepest folder is the next.
    layer.before("unlinkat", levels, [&] { move(inTarget(pathOf(movedLevel)), moved); });
    EXPECT_FALSE(Creation::undo(record, layer).succeeded);
    EXPECT_TRUE(QFile::exists(moved));
}

TEST_F(ChangingWorldTest, WhatTakesThePlaceOfSomethingRightBeforeItsRemovalStays)
{
    const Creation::Record record = create(newFile());
    InterveningLayer layer;
    // The first look compares, the second one is that of the removal.
    layer.before("fstatat", 1, [&] {
        move(inTarget(QStringLiteral("new")), elsewhere());
        put(inTarget(QStringLiteral("new")), "the user's");
    });
    const Creation::UndoOutcome undone = Creation::undo(record, layer);
    EXPECT_FALSE(undone.succeeded);
    expectOtherPlaceTold(undone.error);
    EXPECT_EQ(DiskTree::at(disk(), "new").bytes, "the user's");
}
