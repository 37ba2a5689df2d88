// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Names that are two to us and one to the disk.

#include "BlindDisk.h"
#include "CreationFixture.h"
#include "Helper/Creation/DiskNames.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

const QString composed = QStringLiteral("\u00E9");
const QString decomposed = QStringLiteral("e\u0301");

class BlindDiskTest : public CreationFixture
{
protected:
    /// Twins in the target, in a new folder, and in one that may be there.
    static QNBHierarchyItemPtr twins()
    {
        return Items::root({
            Items::file(QStringLiteral("Read Me.txt")),
            Items::file(QStringLiteral("READ ME.TXT")),
            Items::folder(QStringLiteral("New"), {Items::folder(composed), Items::file(decomposed)}),
            Items::folder(QStringLiteral("There"),
                          {Items::file(QStringLiteral("mine")), Items::file(QStringLiteral("Mine"))}),
        });
    }
};

} // namespace

TEST_F(BlindDiskTest, ATwinGetsAnotherNameWhereTheDiskSaysThatItIsBlind)
{
    for (const BlindDisk::Sign sign : {BlindDisk::Sign::Type, BlindDisk::Sign::Flag}) {
        makeFolder(inTarget(QStringLiteral("there")));
        put(inTarget(QStringLiteral("there/mine")), "mine");
        const auto before = disk();
        BlindDisk layer(sign);
        const Creation::Plan planned = Creation::plan(*twins(), target(), options(), layer);
        QStringList conflicts;
        for (const Creation::Conflict &conflict : planned.conflicts())
            conflicts.append(conflict.path + QStringLiteral(" > ") + conflict.newName);
        EXPECT_THAT(conflicts, ElementsAre(QStringLiteral("READ ME.TXT > READ ME-1.TXT"),
                                           QStringLiteral("New/e\u0301 > e\u0301-1"),
                                           QStringLiteral("There/mine > mine-1"),
                                           QStringLiteral("There/Mine > Mine-2")));
        const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
        ASSERT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
        EXPECT_THAT(DiskTree::paths(disk()),
                    UnorderedElementsAre("Read Me.txt", "READ ME-1.TXT", "New", "New/" + composed.toUtf8(),
                                         "New/" + decomposed.toUtf8() + "-1", "there", "there/mine",
                                         "there/mine-1", "there/Mine-2"));
        EXPECT_EQ(DiskTree::at(disk(), "there/mine"), DiskTree::at(before, "there/mine"));
        EXPECT_TRUE(Creation::undo(outcome.record, layer).succeeded);
        EXPECT_EQ(DiskTree::paths(disk()), DiskTree::paths(before));
        DiskTree::clear(target());
    }
}

TEST_F(BlindDiskTest, ATwinIsRefusedThereIfThatWasChosen)
{
    BlindDisk layer(BlindDisk::Sign::Type);
    const Creation::Plan planned =
        Creation::plan(*twins(), target(), options(Creation::OnConflict::Refuse), layer);
    EXPECT_FALSE(planned.canBeExecuted());
    QStringList paths;
    for (const Creation::Conflict &conflict : planned.conflicts())
        paths.append(conflict.path);
    EXPECT_THAT(paths, ElementsAre(QStringLiteral("READ ME.TXT"), QStringLiteral("New/e\u0301"),
                                   QStringLiteral("There/Mine")));
}

TEST_F(BlindDiskTest, ADiskThatDoesNotSayThatItIsBlindIsLeftAsItWasAndTheTwinIsNamed)
{
    const auto before = disk();
    BlindDisk layer(BlindDisk::Sign::None);
    const Creation::Plan planned = Creation::plan(*twins(), target(), options(), layer);
    EXPECT_THAT(planned.conflicts(), IsEmpty());
    Creation::Outcome outcome = Creation::execute(planned, {}, layer);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(),
                HasSubstr("“READ ME.TXT”: the disk takes its name for that of “Read Me.txt”"));
    EXPECT_EQ(disk(), before);

    const QNBHierarchyItemPtr folders = Items::root(
        {Items::folder(QStringLiteral("new"), {Items::file(composed), Items::folder(decomposed)})});
    outcome = Creation::execute(Creation::plan(*folders, target(), options(), layer), {}, layer);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(),
                HasSubstr("“new/e\u0301”: the disk takes its name for that of “new/\u00E9”"));
    EXPECT_EQ(disk(), before);
}

TEST_F(BlindDiskTest, ThisDiskIsNotBlind)
{
    const Creation::Plan planned = plan(twins());
    EXPECT_THAT(planned.conflicts(), IsEmpty());
    ASSERT_TRUE(Creation::execute(planned).succeeded);
    EXPECT_EQ(DiskTree::paths(disk()).size(), 8u);
}

TEST_F(BlindDiskTest, KeysAreEqualForWhatABlindDiskMayTakeForTheSame)
{
    const auto areEqual = [](const QString &one, const QString &other) {
        return Creation::DiskNames::key(one.toUtf8()) == Creation::DiskNames::key(other.toUtf8());
    };
    EXPECT_TRUE(areEqual(QStringLiteral("a.TXT"), QStringLiteral("A.txt")));
    EXPECT_TRUE(areEqual(composed, decomposed));
    EXPECT_TRUE(areEqual(composed, decomposed.toUpper()));
    EXPECT_TRUE(areEqual(QStringLiteral("stra\u00DFe"), QStringLiteral("STRASSE")));
    EXPECT_FALSE(areEqual(QStringLiteral("a"), QStringLiteral("b")));
    EXPECT_FALSE(areEqual(QStringLiteral("e"), composed));
    EXPECT_FALSE(areEqual(QStringLiteral("a"), QStringLiteral("a ")));
}
