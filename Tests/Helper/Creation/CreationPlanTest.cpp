// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"

#include "Helper/Creation/ItemName.h"

#include <QFile>
#include <ctime>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class CreationPlanTest : public CreationFixture
{
};

TEST_F(CreationPlanTest, SaysInOneLineEachWhatWillBeDone)
{
    put(contentFolder() + QStringLiteral("/Letter.txt"), "Dear reader");
    makeFolder(inTarget(QStringLiteral("There")));
    const auto before = disk();
    const Creation::Plan planned = plan(Items::root({
        Items::folder(QStringLiteral("Letters"),
                      {Items::file(QStringLiteral("a\nb"), {QStringLiteral("640"), QStringLiteral("blue"),
                                                            QStringLiteral("Letter.txt")})},
                      {QStringLiteral("550"), QStringLiteral("red"), {}}),
        Items::folder(QStringLiteral("There"), {Items::file(QStringLiteral("c"))}),
        Items::folder(QStringLiteral("Empty"), {}, {QStringLiteral("000"), {}, {}}),
    }));
    EXPECT_THAT(
        planned.lines(),
        ElementsAre(QStringLiteral("create folder Letters (550, red)"),
                    QStringLiteral("create file Letters/a␊b (640, blue) with the content of Letter.txt"),
                    QStringLiteral("set permissions of folder Letters (550)"),
                    QStringLiteral("use existing folder There"), QStringLiteral("create file There/c (764)"),
                    QStringLiteral("create folder Empty (000)")));
    EXPECT_TRUE(planned.canBeExecuted());
    EXPECT_EQ(planned.target(), target());
    EXPECT_EQ(disk(), before);
}

TEST_F(CreationPlanTest, NamesThatAreNoNamesAreProblems)
{
    const QStringList names = {QString(),
                               QStringLiteral("."),
                               QStringLiteral(".."),
                               QStringLiteral("../outside/x"),
                               QStringLiteral("/etc/x"),
                               QStringLiteral("a/b"),
                               QString(QChar(u'\0')),
                               QStringLiteral("a") + QChar(u'\0'),
                               QString(256, u'x'),
                               QString(128, u'ä'),
                               QStringLiteral("a") + QChar(0xD800),
                               QStringLiteral("a") + QChar(0xDC00) + u'b'};
    const auto before = disk();
    for (const QString &name : names) {
        const Creation::Plan file = plan(Items::root({Items::file(name)}));
        EXPECT_FALSE(file.canBeExecuted()) << qPrintable(name);
        EXPECT_THAT(file.operations(), IsEmpty()) << qPrintable(name);
        EXPECT_THAT(file.problems(), SizeIs(1)) << qPrintable(name);
        EXPECT_THAT(plan(Items::root({Items::folder(name, {Items::file(QStringLiteral("x"))})})).problems(),
                    SizeIs(1))
            << qPrintable(name);
        EXPECT_FALSE(Creation::execute(file).succeeded);
    }
    EXPECT_EQ(disk(), before);
    EXPECT_THAT(DiskTree::paths(DiskTree::read(outside())), IsEmpty());
}

TEST_F(CreationPlanTest, AVeryLongNameIsNotLookedAtForEachItemThatSharesIt)
{
    const QNBHierarchyItemPtr root = Items::root({Items::file(QStringLiteral("a"))});
    const QString name(1'000'000, QChar(u'Ä'));
    for (int i = 0; i < 2'000; ++i) {
        root->addChild(QNBHierarchyItem::init());
        root->children().back()->setFilename(name);
    }
    put(inTarget(QStringLiteral("a")), {});
    const std::clock_t start = std::clock();
    const Creation::Plan planned = plan(root);
    // Each look at the whole name would add some milliseconds.
    EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, 2);
    EXPECT_THAT(planned.problems(), SizeIs(2'000));
    EXPECT_THAT(planned.conflicts(), SizeIs(1));
}

TEST_F(CreationPlanTest, NamesUpToTheLimitAreCreated)
{
    const QStringList names = {QString(255, u'x'),     QString(127, u'ä') + u'y',
                               QStringLiteral("..."),  QStringLiteral(" "),
                               QStringLiteral("-rf"),  QStringLiteral("~"),
                               QStringLiteral("a\nb"), QStringLiteral("\\"),
                               QStringLiteral("*"),    QString::fromUtf8("\U0001F600")};
    QVariantList children;
    for (const QString &name : names)
        children.append(Items::file(name));
    create(Items::root(children));
    std::vector<QByteArray> expected;
    for (const QString &name : names)
        expected.push_back(name.toUtf8());
    EXPECT_THAT(DiskTree::paths(disk()), ::testing::UnorderedElementsAreArray(expected));
}

TEST_F(CreationPlanTest, ANameThatNoNumberFitsToIsAProblem)
{
    const QString name(254, u'x');
    put(inTarget(name), {});
    const Creation::Plan planned = plan(Items::root({Items::file(name)}));
    EXPECT_FALSE(planned.canBeExecuted());
    EXPECT_THAT(planned.problems(), SizeIs(1));
}

TEST_F(CreationPlanTest, TheSecondItemOfANameGetsAnotherOne)
{
    const Creation::Plan planned = plan(Items::root({
        Items::file(QStringLiteral("a.txt")),
        Items::file(QStringLiteral("a.txt")),
        Items::folder(QStringLiteral("a.txt"), {Items::file(QStringLiteral("b"))}),
        Items::file(QStringLiteral("A-1.txt")),
    }));
    EXPECT_TRUE(planned.canBeExecuted());
    ASSERT_THAT(planned.conflicts(), SizeIs(2));
    EXPECT_EQ(planned.conflicts()[0].path, QStringLiteral("a.txt"));
    EXPECT_EQ(planned.conflicts()[0].newName, QStringLiteral("a-2.txt"));
    EXPECT_EQ(planned.conflicts()[1].newName, QStringLiteral("a-3.txt"));
    ASSERT_TRUE(Creation::execute(planned).succeeded);
    EXPECT_THAT(DiskTree::paths(disk()), ElementsAre("A-1.txt", "a-2.txt", "a-3.txt", "a-3.txt/b", "a.txt"));
}

TEST_F(CreationPlanTest, TwinsAreTwoItems)
{
    // The same letter, composed and decomposed.
    const QString composed = QStringLiteral("\u00E9");
    const QString decomposed = QStringLiteral("e\u0301");
    const Creation::Plan planned =
        plan(Items::root({Items::file(composed), Items::file(decomposed), Items::file(QStringLiteral("case")),
                          Items::file(QStringLiteral("Case"))}));
    EXPECT_THAT(planned.conflicts(), IsEmpty());
    ASSERT_TRUE(Creation::execute(planned).succeeded);
    EXPECT_THAT(DiskTree::paths(disk()),
                ::testing::UnorderedElementsAre(composed.toUtf8(), decomposed.toUtf8(), "case", "Case"));
}

TEST_F(CreationPlanTest, ARefusedConflictIsNamed)
{
    makeFolder(inTarget(QStringLiteral("there")));
    put(inTarget(QStringLiteral("there/file")), "mine");
    put(inTarget(QStringLiteral("folder")), "mine");
    const QNBHierarchyItemPtr root = Items::root({
        Items::folder(QStringLiteral("there"), {Items::file(QStringLiteral("file"))}),
        Items::folder(QStringLiteral("folder"), {Items::file(QStringLiteral("inside"))}),
        Items::file(QStringLiteral("twice")),
        Items::file(QStringLiteral("twice")),
    });
    const Creation::Plan planned = Creation::plan(*root, target(), options(Creation::OnConflict::Refuse));
    EXPECT_FALSE(planned.canBeExecuted());
    QStringList paths;
    for (const Creation::Conflict &conflict : planned.conflicts()) {
        EXPECT_EQ(conflict.newName, QString());
        paths.append(conflict.path);
    }
    EXPECT_THAT(paths,
                ElementsAre(QStringLiteral("there/file"), QStringLiteral("folder"), QStringLiteral("twice")));
}

TEST_F(CreationPlanTest, ContentOutsideItsFolderIsAProblem)
{
    put(outside() + QStringLiteral("/secret"), "secret");
    makeFolder(contentFolder() + QStringLiteral("/folder"));
    makeFolder(contentFolder() + QStringLiteral("-sibling"));
    put(contentFolder() + QStringLiteral("-sibling/x"), "x");
    makeLink(contentFolder() + QStringLiteral("/circle"), QStringLiteral("circle"));
    put(contentFolder() + QStringLiteral("/file"), "bytes");
    ASSERT_EQ(::mkfifo(QFile::encodeName(contentFolder() + QStringLiteral("/fifo")).constData(), 0600), 0);
    const QStringList names = {QStringLiteral("../outside/secret"),
                               outside() + QStringLiteral("/secret"),
                               QStringLiteral("../File Content-sibling/x"),
                               contentFolder() + QStringLiteral("/file"),
                               QStringLiteral("folder/../file"),
                               QStringLiteral("folder//../file"),
                               QStringLiteral(".//file"),
                               QStringLiteral("file/"),
                               QStringLiteral("file/file"),
                               QStringLiteral("circle"),
                               QStringLiteral("missing"),
                               QStringLiteral("folder"),
                               QStringLiteral("fifo"),
                               QStringLiteral("."),
                               QStringLiteral("link") + QChar(u'\0'),
                               QString(5000, u'x')};
    for (const QString &name : names) {
        const Creation::Plan planned =
            plan(Items::root({Items::file(QStringLiteral("file"), {QStringLiteral("644"), {}, name})}));
        EXPECT_FALSE(planned.canBeExecuted()) << qPrintable(name);
        ASSERT_THAT(planned.problems(), SizeIs(1)) << qPrintable(name);
        EXPECT_EQ(planned.problems().constFirst().path, QStringLiteral("file"));
    }
}

TEST_F(CreationPlanTest, AFolderNeedsNoContentFile)
{
    const Creation::Plan planned = plan(Items::root(
        {Items::folder(QStringLiteral("a"), {}, {QStringLiteral("755"), {}, QStringLiteral("missing")})}));
    EXPECT_TRUE(planned.canBeExecuted());
}

TEST_F(CreationPlanTest, ATargetThatIsNoFolderIsAProblem)
{
    put(outside() + QStringLiteral("/file"), "file");
    const QNBHierarchyItemPtr root = Items::root({Items::file(QStringLiteral("a"))});
    for (const QString &place : {QString(), outside() + QStringLiteral("/missing"),
                                 outside() + QStringLiteral("/file"), target() + QChar(u'\0')}) {
        const Creation::Plan planned = Creation::plan(*root, place, options());
        EXPECT_FALSE(planned.canBeExecuted()) << qPrintable(place);
        ASSERT_THAT(planned.problems(), SizeIs(1)) << qPrintable(place);
        EXPECT_EQ(planned.problems().constFirst().path, QString());
        EXPECT_FALSE(Creation::execute(planned).succeeded);
    }
}

TEST_F(CreationPlanTest, TheTargetMayBeReachedThroughLinks)
{
    makeLink(outside() + QStringLiteral("/link"), target());
    const QNBHierarchyItemPtr root = Items::root({Items::file(QStringLiteral("a"))});
    const Creation::Plan planned = Creation::plan(*root, outside() + QStringLiteral("/link"), options());
    EXPECT_EQ(planned.resolvedTarget(), QFile::encodeName(QFileInfo(target()).canonicalFilePath()));
    // The link leads elsewhere by the time of the execution.
    ASSERT_TRUE(QFile::remove(outside() + QStringLiteral("/link")));
    makeLink(outside() + QStringLiteral("/link"), contentFolder());
    EXPECT_TRUE(Creation::execute(planned).succeeded);
    EXPECT_THAT(DiskTree::paths(disk()), ElementsAre("a"));
}

TEST_F(CreationPlanTest, ManyConflictsAreNumberedOn)
{
    QVariantList children;
    for (int i = 0; i < 1000; ++i)
        children.append(Items::file(QStringLiteral("same.txt")));
    create(Items::root(children));
    EXPECT_THAT(DiskTree::paths(disk()), SizeIs(1000));
    create(Items::root(children));
    const auto paths = DiskTree::paths(disk());
    EXPECT_THAT(paths, SizeIs(2000));
    EXPECT_THAT(paths, ::testing::Contains("same-1999.txt"));
}
