// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"

#include "Shared/Source/QNBShared.h"
#include "Tests/Session/Umask.h"

#include <QFile>
#include <array>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString named = QStringLiteral("name");

} // namespace

class ExecutionTest : public CreationFixture
{
};

TEST_F(ExecutionTest, AnEmptyTreeCreatesNothing)
{
    const auto before = disk();
    EXPECT_TRUE(create(Items::root({})).isEmpty());
    EXPECT_EQ(disk(), before);
}

TEST_F(ExecutionTest, TheChildrenOfTheRootAreCreatedInTheTarget)
{
    put(contentFolder() + QStringLiteral("/Letter.txt"), "Dear reader");
    create(Items::root({
        Items::folder(
            QStringLiteral("Letters"),
            {Items::file(QStringLiteral("Invoice.txt"),
                         {QStringLiteral("640"), QStringLiteral("blue"), QStringLiteral("Letter.txt")}),
             Items::folder(QStringLiteral("Old"))},
            {QStringLiteral("750"), QStringLiteral("red"), {}}),
        Items::file(QStringLiteral("Notes"), {QStringLiteral("600"), {}, {}}),
    }));
    const auto entries = disk();
    EXPECT_THAT(DiskTree::paths(entries),
                ElementsAre("Letters", "Letters/Invoice.txt", "Letters/Old", "Notes"));
    EXPECT_EQ(DiskTree::at(entries, ".").label, 0);
    const DiskEntry letters = DiskTree::at(entries, "Letters");
    EXPECT_TRUE(letters.isFolder());
    EXPECT_EQ(letters.permissions(), 0750u);
    EXPECT_EQ(quint64(letters.label), QNBFinderLabelForColor(QStringLiteral("red")));
    const DiskEntry invoice = DiskTree::at(entries, "Letters/Invoice.txt");
    EXPECT_TRUE(S_ISREG(invoice.mode));
    EXPECT_EQ(invoice.permissions(), 0640u);
    EXPECT_EQ(quint64(invoice.label), QNBFinderLabelForColor(QStringLiteral("blue")));
    EXPECT_EQ(invoice.bytes, "Dear reader");
    EXPECT_EQ(DiskTree::at(entries, "Letters/Old").permissions(), 0755u);
    EXPECT_EQ(DiskTree::at(entries, "Notes").bytes, "");
    EXPECT_EQ(DiskTree::at(entries, "Notes").permissions(), 0600u);
}

TEST_F(ExecutionTest, PermissionsAreExactUnderAnyUmask)
{
    for (const mode_t mask : {0022u, 0777u}) {
        const Umask umask(mask);
        QVariantList children;
        for (int mode = 0; mode < 01000; ++mode) {
            const QString digits = QString::number(mode, 8).rightJustified(3, u'0');
            children.append(Items::file(QStringLiteral("file") + digits, {digits, {}, {}}));
            children.append(Items::folder(QStringLiteral("folder") + digits,
                                          {Items::file(QStringLiteral("inside"), {digits, {}, {}})},
                                          {digits, {}, {}}));
        }
        const Creation::Record record = create(Items::root(children));
        EXPECT_EQ(record.entries.size(), 3u * 01000u);
        struct stat information = {};
        for (int mode = 0; mode < 01000; ++mode) {
            const QString digits = QString::number(mode, 8).rightJustified(3, u'0');
            for (const QString &name : {QStringLiteral("file"), QStringLiteral("folder")}) {
                ASSERT_EQ(::stat(QFile::encodeName(inTarget(name + digits)).constData(), &information), 0);
                EXPECT_EQ(information.st_mode & 07777, mode_t(mode)) << qPrintable(name + digits);
            }
        }
        const Creation::UndoOutcome undone = Creation::undo(record);
        EXPECT_TRUE(undone.succeeded) << qPrintable(undone.error);
        EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
    }
}

TEST_F(ExecutionTest, OnlyTheLowThreeBitsOfADigitCount)
{
    const QNBHierarchyItemPtr root = Items::root({Items::file(named), Items::file(QStringLiteral("other"))});
    root->children().front()->setCustomPermissions(
        {{QStringLiteral("u"), 15}, {QStringLiteral("g"), 12}, {QStringLiteral("o"), 8}});
    root->children().back()->setCustomPermissions({{QStringLiteral("u"), 6}});
    create(root);
    EXPECT_EQ(DiskTree::at(disk(), "name").permissions(), 0740u);
    EXPECT_EQ(DiskTree::at(disk(), "other").permissions(), 0600u);
}

TEST_F(ExecutionTest, AFolderKeepsTheGroupBitThatItInherits)
{
    ASSERT_EQ(::chmod(QFile::encodeName(target()).constData(), 02755), 0);
    const Creation::Record record =
        create(Items::root({Items::folder(named, {Items::file(named)}, {QStringLiteral("510"), {}, {}})}));
    const auto entries = disk();
    EXPECT_EQ(DiskTree::at(entries, "name").permissions(), 02510u);
    EXPECT_EQ(DiskTree::at(entries, "name/name").permissions(), 0764u);
    EXPECT_TRUE(Creation::undo(record).succeeded);
}

TEST_F(ExecutionTest, LabelsAreThoseOfTheSharedFunction)
{
    const QStringList colors = {QStringLiteral("gray"),   QStringLiteral("green"),  QStringLiteral("purple"),
                                QStringLiteral("blue"),   QStringLiteral("yellow"), QStringLiteral("red"),
                                QStringLiteral("orange"), QStringLiteral("pink")};
    QVariantList children;
    for (const QString &color : colors) {
        children.append(Items::file(QStringLiteral("file ") + color, {QStringLiteral("400"), color, {}}));
        children.append(
            Items::folder(QStringLiteral("folder ") + color, {}, {QStringLiteral("500"), color, {}}));
    }
    create(Items::root(children));
    const auto entries = disk();
    for (const QString &color : colors) {
        put(outside() + u'/' + color, {});
        const quint64 label = QNBFinderLabelForColor(color);
        QNBSetFinderLabelForPath(label == QNBNotFound ? 0 : label, outside() + u'/' + color);
        const int expected = DiskTree::at(DiskTree::read(outside()), color.toUtf8()).label;
        EXPECT_EQ(DiskTree::at(entries, "file " + color.toUtf8()).label, expected);
        EXPECT_EQ(DiskTree::at(entries, "folder " + color.toUtf8()).label, expected);
    }
}

TEST_F(ExecutionTest, LabelsAreThoseOfThePaneWhateverTheCaseOfTheirNames)
{
    create(Items::root({Items::file(QStringLiteral("capital"), {{}, QStringLiteral("Red"), {}}),
                        Items::folder(QStringLiteral("all"), {}, {{}, QStringLiteral("PURPLE"), {}}),
                        Items::file(QStringLiteral("none"), {{}, QStringLiteral("clearColor"), {}})}));
    const auto entries = disk();
    EXPECT_EQ(quint64(DiskTree::at(entries, "capital").label), QNBFinderLabelForColor(QStringLiteral("red")));
    EXPECT_EQ(quint64(DiskTree::at(entries, "all").label), QNBFinderLabelForColor(QStringLiteral("purple")));
    EXPECT_EQ(DiskTree::at(entries, "none").label, 0);
}

TEST_F(ExecutionTest, ContentOfAnySizeIsCopied)
{
    QVariantList children;
    const std::array<qsizetype, 6> sizes = {0, 1, 4096, 128 * 1024, 128 * 1024 + 1, 3'000'000};
    for (const qsizetype size : sizes) {
        const QString name = QString::number(size);
        QByteArray bytes(size, Qt::Uninitialized);
        for (qsizetype i = 0; i < size; ++i)
            bytes[i] = char(i * 31 / 7);
        put(contentFolder() + u'/' + name, bytes);
        children.append(Items::file(name, {QStringLiteral("444"), {}, name}));
        children.append(Items::file(name + QStringLiteral(" again"), {QStringLiteral("444"), {}, name}));
    }
    create(Items::root(children));
    const auto entries = disk();
    const auto originals = DiskTree::read(contentFolder());
    for (const qsizetype size : sizes) {
        const QByteArray name = QByteArray::number(size);
        const QByteArray bytes = DiskTree::at(originals, name).bytes;
        EXPECT_EQ(bytes.size(), size);
        EXPECT_TRUE(DiskTree::at(entries, name).bytes == bytes) << size;
        EXPECT_TRUE(DiskTree::at(entries, name + " again").bytes == bytes) << size;
    }
}

TEST_F(ExecutionTest, TheOrderOfCreationIsThatOfTheTree)
{
    const Creation::Record record = create(Items::root({
        Items::file(QStringLiteral("z")),
        Items::folder(QStringLiteral("m"),
                      {Items::file(QStringLiteral("y")), Items::file(QStringLiteral("b"))}),
        Items::file(QStringLiteral("a")),
    }));
    QStringList paths;
    for (qsizetype i = 0; i < qsizetype(record.entries.size()); ++i)
        paths.append(record.path(i));
    EXPECT_THAT(paths, ElementsAre(QStringLiteral("z"), QStringLiteral("m"), QStringLiteral("m/y"),
                                   QStringLiteral("m/b"), QStringLiteral("a")));
}

TEST_F(ExecutionTest, AFolderThatIsThereIsMergedIntoAndStaysAsItIs)
{
    makeFolder(inTarget(QStringLiteral("Letters")));
    put(inTarget(QStringLiteral("Letters/mine")), "mine");
    ASSERT_EQ(::chmod(QFile::encodeName(inTarget(QStringLiteral("Letters"))).constData(), 0711), 0);
    const auto before = disk();
    create(Items::root({Items::folder(QStringLiteral("Letters"), {Items::file(QStringLiteral("new"))},
                                      {QStringLiteral("750"), QStringLiteral("red"), {}})}));
    const auto after = disk();
    EXPECT_THAT(DiskTree::paths(after), ElementsAre("Letters", "Letters/mine", "Letters/new"));
    EXPECT_EQ(DiskTree::at(after, "Letters").permissions(), 0711u);
    EXPECT_EQ(DiskTree::at(after, "Letters").label, 0);
    EXPECT_EQ(DiskTree::at(after, "Letters/mine"), DiskTree::at(before, "Letters/mine"));
}

TEST_F(ExecutionTest, WhatIsThereIsNeverOverwritten)
{
    put(inTarget(QStringLiteral("a.txt")), "mine");
    put(inTarget(QStringLiteral("A-1.TXT")), "mine too");
    makeLink(inTarget(QStringLiteral("folder")), outside());
    makeLink(inTarget(QStringLiteral("dangling")), QStringLiteral("nowhere"));
    makeFolder(inTarget(QStringLiteral("file")));
    const auto before = disk();
    create(Items::root({
        Items::file(QStringLiteral("a.txt")),
        Items::folder(QStringLiteral("folder"), {Items::file(QStringLiteral("inside"))}),
        Items::file(QStringLiteral("dangling")),
        Items::file(QStringLiteral("file")),
    }));
    const auto after = disk();
    EXPECT_THAT(DiskTree::paths(after),
                ElementsAre("A-1.TXT", "a-2.txt", "a.txt", "dangling", "dangling-1", "file", "file-1",
                            "folder", "folder-1", "folder-1/inside"));
    for (const QByteArray path : {"A-1.TXT", "a.txt", "dangling", "file", "folder"})
        EXPECT_EQ(DiskTree::at(after, path), DiskTree::at(before, path));
    EXPECT_THAT(DiskTree::paths(DiskTree::read(outside())), IsEmpty());
}

TEST_F(ExecutionTest, AnythingThatIsNotAsPlannedFailsAndIsUndone)
{
    makeFolder(inTarget(QStringLiteral("there")));
    const Creation::Plan planned = plan(Items::root({
        Items::folder(QStringLiteral("new"), {Items::file(QStringLiteral("inside"))}),
        Items::folder(QStringLiteral("there"), {Items::file(QStringLiteral("inside"))}),
        Items::file(QStringLiteral("last")),
    }));
    put(inTarget(QStringLiteral("last")), "mine");
    auto before = disk();
    Creation::Outcome outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(), ::testing::HasSubstr("“last”"));
    EXPECT_TRUE(outcome.record.isEmpty());
    EXPECT_EQ(disk(), before);

    ASSERT_TRUE(QFile::remove(inTarget(QStringLiteral("last"))));
    ASSERT_TRUE(QFile::rename(inTarget(QStringLiteral("there")), outside() + QStringLiteral("/there")));
    makeLink(inTarget(QStringLiteral("there")), outside() + QStringLiteral("/there"));
    before = disk();
    outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(disk(), before);
    EXPECT_THAT(DiskTree::paths(DiskTree::read(outside())), ElementsAre("there"));

    ASSERT_TRUE(QFile::remove(inTarget(QStringLiteral("there"))));
    makeFolder(inTarget(QStringLiteral("there")));
    before = disk();
    outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(), ::testing::HasSubstr("taken its place"));
    EXPECT_EQ(disk(), before);
}

TEST_F(ExecutionTest, ACancelledRunIsUndone)
{
    makeFolder(inTarget(QStringLiteral("there")));
    const Creation::Plan planned = plan(Items::root({
        Items::folder(QStringLiteral("there"), {Items::file(named), Items::folder(QStringLiteral("x"))}),
        Items::folder(QStringLiteral("new"), {Items::file(named)}, {QStringLiteral("000"), {}, {}}),
    }));
    const auto before = disk();
    const auto total = qsizetype(planned.operations().size());
    ASSERT_EQ(total, 6);
    for (qsizetype last = 1; last <= total; ++last) {
        const Creation::Outcome outcome = Creation::execute(planned, [&](qsizetype done, qsizetype all) {
            EXPECT_EQ(all, total);
            EXPECT_LE(done, last);
            return done < last;
        });
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_TRUE(outcome.cancelled);
        EXPECT_EQ(disk(), before);
    }
}

TEST_F(ExecutionTest, ARefusedPlanCreatesNothing)
{
    put(inTarget(named), "mine");
    const QNBHierarchyItemPtr root = Items::root({Items::file(QStringLiteral("first")), Items::file(named)});
    const Creation::Plan planned = Creation::plan(*root, target(), options(Creation::OnConflict::Refuse));
    EXPECT_FALSE(planned.canBeExecuted());
    const auto before = disk();
    EXPECT_FALSE(Creation::execute(planned).succeeded);
    EXPECT_EQ(disk(), before);
}
