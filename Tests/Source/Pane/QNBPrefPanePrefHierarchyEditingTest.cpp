// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "HierarchyFixture.h"

#include "Source/Controls/QNBHoverCell.h"
#include "Source/Model/QNBHierarchyDepth.h"
#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

class QNBPrefPanePrefHierarchyEditing : public HierarchyFixture
{
protected:
    void click(const char *button) const
    {
        QTest::mouseClick(outlet<QPushButton>(text(button)), Qt::LeftButton);
    }
    /// As the outline tells that the user typed it.
    void rename(const QString &path, const QString &name) const
    {
        pane->outlineViewSetObjectValue(outline(), name, 0, item(path));
    }
};

} // namespace

TEST_F(QNBPrefPanePrefHierarchyEditing, WithNothingSelectedANewItemBecomesTheRootsFirstChild)
{
    openTree({text("old")});
    const QVariantMap before = tree();
    pane->addFileToPresetHierarchy();
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("old")}));
    EXPECT_EQ(selectedName(), u"Untitled");
    EXPECT_EQ(lastStep(), u"New File");
    EXPECT_FALSE(item(text("Untitled"))->isDirectory());
    // It is selected now, and its name is kept.
    pane->addDirectoryToPresetHierarchy();
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("Untitled-1"), text("old")}));
    EXPECT_EQ(selectedName(), u"Untitled-1");
    EXPECT_EQ(lastStep(), u"New Folder");
    EXPECT_TRUE(item(text("Untitled-1"))->isDirectory());
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, WithAFolderSelectedANewItemIsItsLastChildAndTheFolderIsExpanded)
{
    openTree({text("folder/"), text("folder/a"), text("folder/b"), text("after")});
    const QVariantMap before = tree();
    outline().collapseItem(item(text("folder")));
    select(text("folder"));
    pane->addDirectoryToPresetHierarchy();
    EXPECT_EQ(names(text("folder")), QStringList({text("a"), text("b"), text("Untitled")}));
    EXPECT_TRUE(outline().isItemExpanded(item(text("folder"))));
    EXPECT_EQ(outlineRows(),
              QStringList({text("folder"), text("a"), text("b"), text("Untitled"), text("after")}));
    EXPECT_EQ(selectedName(), u"Untitled");
    expectUndoAndRedo(before, 1);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AnEmptyFolderIsExpandedForItsFirstChild)
{
    openTree({text("empty/"), text("after")});
    select(text("empty"));
    pane->addFileToPresetHierarchy();
    EXPECT_EQ(outlineRows(), QStringList({text("empty"), text("Untitled"), text("after")}));
    EXPECT_EQ(selectedName(), u"Untitled");
}

TEST_F(QNBPrefPanePrefHierarchyEditing, WithAFileSelectedTheNewItemStandsRightAfterItInTheSameFolder)
{
    openTree({text("folder/"), text("folder/a"), text("folder/b"), text("Untitled")});
    const QVariantMap before = tree();
    select(text("folder/a"));
    RowSignals rows(outline());
    pane->addFileToPresetHierarchy();
    EXPECT_EQ(rows.take(), QStringList(text("+1"))) << "nothing but the new row";
    EXPECT_EQ(names(text("folder")), QStringList({text("a"), text("Untitled"), text("b")}));
    EXPECT_EQ(outline().selectedRow(), 2);
    expectUndoAndRedo(before, 1);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, TheNameOfANewItemIsTypedAtOnce)
{
    openTree({text("old")});
    const QVariantMap before = tree();
    click("_addFolderButton");
    ASSERT_TRUE(editor());
    EXPECT_EQ(editor()->selectedText(), u"Untitled");
    QTest::keyClicks(editor(), text("Photos"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !outline().isEditing(); }));
    EXPECT_EQ(names(), QStringList({text("Photos"), text("old")}));
    EXPECT_EQ(lastStep(), u"Rename");
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, InsertingCommitsTheEditOfAnotherRowFirst)
{
    openTree({text("old")});
    const QVariantMap before = tree();
    select(text("old"));
    pane->renameSelectedItemInPresetHierarchy();
    ASSERT_TRUE(editor());
    EXPECT_EQ(editor()->selectedText(), u"old");
    QTest::keyClicks(editor(), text("Untitled"));
    pane->addFileToPresetHierarchy();
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("Untitled-1")}));
    EXPECT_EQ(lastStep(), u"New File");
    pane->undo();
    EXPECT_EQ(lastStep(), u"Rename");
    pane->redo();
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, UndoAndRedoRevealWhatTheyInsertIntoACollapsedFolder)
{
    openTree({text("folder/"), text("folder/inner/"), text("after")});
    select(text("folder/inner"));
    pane->addFileToPresetHierarchy();
    outline().endEditing();
    pane->undo();
    outline().collapseItem(item(text("folder")));
    pane->redo();
    EXPECT_EQ(outlineRows(), QStringList({text("folder"), text("inner"), text("Untitled"), text("after")}));
    EXPECT_EQ(selectedName(), u"Untitled");
    pane->undo();
    EXPECT_EQ(selectedName(), u"inner");
}

TEST_F(QNBPrefPanePrefHierarchyEditing, RenamingInOtherCaseKeepsTheNameAsTyped)
{
    openTree({text("a.txt"), text("b.txt")});
    const QVariantMap before = tree();
    RowSignals rows(outline());
    rename(text("a.txt"), text("A.TXT"));
    EXPECT_EQ(names(), QStringList({text("A.TXT"), text("b.txt")}));
    EXPECT_EQ(rows.take(), QStringList());
    EXPECT_GE(rows.changes(), 1);
    EXPECT_EQ(lastStep(), u"Rename");
    rename(text("b.txt"), text("a.txt"));
    EXPECT_EQ(names(), QStringList({text("A.TXT"), text("a-1.txt")}));
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, WhatIsTypedInOtherCaseStaysAndClashesWithItsSiblingAlone)
{
    openTree({text("a.txt"), text("b.txt")});
    select(text("a.txt"));
    QTest::keyClick(&outline(), Qt::Key_Return);
    typeName(text("A.TXT"));
    EXPECT_EQ(names(), QStringList({text("A.TXT"), text("b.txt")}));
    ASSERT_TRUE(QTest::qWaitFor([this] { return !outline().viewport()->findChild<QLineEdit *>(); }));
    select(text("b.txt"));
    QTest::keyClick(&outline(), Qt::Key_Return);
    typeName(text("a.txt"));
    EXPECT_EQ(names(), QStringList({text("A.TXT"), text("a-1.txt")}));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, RenamingSplitsOffOnlyTheLastExtension)
{
    openTree({text("archive.tar.gz"), text("other")});
    select(text("other"));
    QTest::keyClick(&outline(), Qt::Key_F2);
    typeName(text("archive.tar.gz"));
    EXPECT_EQ(names(), QStringList({text("archive.tar.gz"), text("archive.tar-1.gz")}));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, RenamingToNothingGivesUntitledMadeUnique)
{
    openTree({text("untitled"), text("b")});
    rename(text("b"), {});
    EXPECT_EQ(names(), QStringList({text("untitled"), text("Untitled-1")}));
    select(text("untitled"));
    QTest::keyClick(&outline(), Qt::Key_Return);
    typeName({});
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("Untitled-1")}));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, NamesAreNotFiltered)
{
    openTree({text("a")});
    const QString odd = QStringLiteral(" ../a:b~\u0007\u202e.txt ");
    rename(text("a"), odd);
    EXPECT_EQ(names(), QStringList(odd));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, RenamingToTheSameNameIsNoStep)
{
    openTree({text("a"), text("b")});
    rename(text("a"), text("a"));
    EXPECT_EQ(lastStep(), QString());
    pane->outlineViewSetObjectValue(outline(), text("x"), 0, nullptr);
    EXPECT_EQ(lastStep(), QString());
    EXPECT_TRUE(pane->outlineViewShouldEditTableColumn(outline(), 0, item(text("a"))));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, DeletingTakesTheItemAndAllBelowItWithoutAsking)
{
    openTree({text("folder/"), text("folder/a"), text("folder/b"), text("after")});
    const QVariantMap before = tree();
    select(text("folder"));
    RowSignals rows(outline());
    QTest::keyClick(&outline(), Qt::Key_Delete);
    QTest::keyClick(&outline(), Qt::Key_Backspace);
    EXPECT_EQ(tree(), before) << "without Ctrl the key does nothing";
    QTest::keyClick(&outline(), Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(outlineRows(), QStringList(text("after")));
    EXPECT_EQ(rows.take(), QStringList(text("-0")));
    EXPECT_EQ(lastStep(), u"Delete");
    EXPECT_EQ(selectedName(), u"after") << "the selection stays where it was";
    expectUndoAndRedo(before, 1);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, FoldersAreAsOpenAsTheyWereWhenADeletionIsTakenBack)
{
    openTree({text("first"), text("gone/"), text("gone/open/"), text("gone/open/x"), text("gone/shut/"),
              text("gone/shut/within/"), text("gone/shut/within/y"), text("last")});
    outline().collapseItem(item(text("gone/shut")));
    const QStringList before = outlineRows();
    for (int round = 0; round < 2; ++round) {
        select(text("gone"));
        pane->deleteSelectedItemInPresetHierarchy();
        EXPECT_EQ(outlineRows(), QStringList({text("first"), text("last")}));
        pane->undo();
        EXPECT_EQ(outlineRows(), before) << round;
        EXPECT_TRUE(outline().isItemExpanded(item(text("gone/shut/within")))) << "inside a closed folder";
    }
    outline().collapseItem(item(text("gone")));
    pane->redo();
    pane->undo();
    EXPECT_EQ(outlineRows(), QStringList({text("first"), text("gone"), text("last")}));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, ANameOfAnyLengthOutlivesItsEditor)
{
    openTree({text("short")});
    QString name = QString(100'000, u'x') + QStringLiteral("\n\u2028 end");
    name[0] = QChar(0xD800);
    item(text("short"))->setFilename(name);
    outline().selectRow(0);
    pane->renameSelectedItemInPresetHierarchy();
    ASSERT_TRUE(editor());
    EXPECT_TRUE(editor()->selectedText() == name) << "all of it is there to be edited";
    outline().endEditing();
    EXPECT_TRUE(item(name)) << "is still called so";
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHierarchyEditing, DeletingEndsTheEditInProgressFirst)
{
    openTree({text("a"), text("b")});
    const QVariantMap before = tree();
    select(text("a"));
    pane->renameSelectedItemInPresetHierarchy();
    QTest::keyClicks(editor(), text("typed"));
    pane->deleteSelectedItemInPresetHierarchy();
    EXPECT_FALSE(outline().isEditing());
    EXPECT_EQ(names(), QStringList(text("b")));
    pane->undo();
    EXPECT_EQ(names(), QStringList({text("typed"), text("b")}));
    EXPECT_EQ(lastStep(), u"Rename");
    pane->redo();
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, DeleteAndRenameWithoutASelectionDoNothing)
{
    openTree({text("a")});
    outline().selectRow(OutlineView::noRow);
    pane->deleteSelectedItemInPresetHierarchy();
    pane->renameSelectedItemInPresetHierarchy();
    QTest::keyClick(&outline(), Qt::Key_Delete, Qt::ControlModifier);
    QTest::keyClick(&outline(), Qt::Key_Return);
    EXPECT_FALSE(outline().isEditing());
    EXPECT_EQ(names(), QStringList(text("a")));
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHierarchyEditing, OnlyTheSelectedRowIsDeletedOnRequest)
{
    openTree({text("a"), text("b")});
    select(text("b"));
    pane->outlineViewDeleteRowRequested(outline(), 0);
    EXPECT_EQ(names(), QStringList({text("a"), text("b")}));
    pane->outlineViewDeleteRowRequested(outline(), 1);
    EXPECT_EQ(names(), QStringList(text("a")));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AnEmptyFolderShowsNoDisclosureTriangle)
{
    openTree({text("empty/"), text("full/"), text("full/a")});
    EXPECT_FALSE(pane->outlineViewIsItemExpandable(outline(), item(text("empty"))));
    EXPECT_TRUE(pane->outlineViewIsItemExpandable(outline(), item(text("full"))));
    EXPECT_FALSE(pane->outlineViewIsItemExpandable(outline(), item(text("full/a"))));
    EXPECT_TRUE(pane->outlineViewIsItemExpandable(outline(), nullptr));
    EXPECT_FALSE(outline().model()->hasChildren(outline().model()->index(0, 0)));
    EXPECT_TRUE(outline().model()->hasChildren(outline().model()->index(1, 0)));
    // The last child goes, and with it the triangle.
    select(text("full/a"));
    pane->deleteSelectedItemInPresetHierarchy();
    EXPECT_FALSE(outline().model()->hasChildren(outline().model()->index(1, 0)));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AFoldersIconIsTheSameWhateverItsName)
{
    openTree({text("folder/"), text("folder.txt/"), text("plain"), text("a.txt"), text("a.TXT")});
    const auto icon = [this](const char *name) {
        ViewCell cell;
        pane->outlineViewWillDisplayCell(outline(), cell, 0, item(text(name)));
        return cell.image.cacheKey();
    };
    EXPECT_EQ(icon("folder"), icon("folder.txt"));
    EXPECT_NE(icon("folder"), icon("plain"));
    EXPECT_EQ(icon("a.txt"), icon("a.TXT"));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AFileWithoutAnExtensionShowsTheGenericDocumentIcon)
{
    openTree({text("plain"), text(".profile"), text("done.")});
    const QIcon generic = WorkspaceIcons().iconForFile({});
    const QImage expected = generic.pixmap(16).toImage();
    for (const char *name : {"plain", ".profile", "done."}) {
        ViewCell cell;
        pane->outlineViewWillDisplayCell(outline(), cell, 0, item(text(name)));
        EXPECT_EQ(cell.image.pixmap(16).toImage(), expected) << name;
    }
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AFileHasTheIconOfItsExtension)
{
    const QString icons = path(text("icons/two"));
    for (const char *name : {"text-plain", "image-png"}) {
        QPixmap pixmap(16, 16);
        pixmap.fill(*name == 't' ? Qt::green : Qt::blue);
        QDir().mkpath(icons + text("/16/mimetypes"));
        ASSERT_TRUE(pixmap.save(icons + text("/16/mimetypes/") + text(name) + text(".png")));
    }
    writeFile(text("icons/two/index.theme"), "[Icon Theme]\nName=two\nDirectories=16/mimetypes\n"
                                             "[16/mimetypes]\nSize=16\nType=Fixed\n");
    const QStringList searchPaths = QIcon::themeSearchPaths();
    const QString theme = QIcon::themeName();
    QIcon::setThemeSearchPaths({path(text("icons"))});
    QIcon::setThemeName(text("two"));
    openTree({text("note.txt"), text("picture.PNG")});
    const auto color = [this](const char *name) {
        ViewCell cell;
        pane->outlineViewWillDisplayCell(outline(), cell, 0, item(text(name)));
        return cell.image.pixmap(16).toImage().pixelColor(8, 8);
    };
    EXPECT_EQ(color("note.txt"), QColor(Qt::green));
    EXPECT_EQ(color("picture.PNG"), QColor(Qt::blue));
    closePane();
    QIcon::setThemeSearchPaths(searchPaths);
    QIcon::setThemeName(theme);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, AColourLabelTintsTheIconHalfWithTheFirstColourOfItsGel)
{
    openTree({text("plain"), text("labelled")});
    const auto image = [this](const char *name) {
        ViewCell cell;
        pane->outlineViewWillDisplayCell(outline(), cell, 0, item(text(name)));
        return cell.image.pixmap(16).toImage();
    };
    EXPECT_EQ(image("labelled"), image("plain"));
    for (const char *name : {"red", "orange", "yellow", "green", "blue", "purple", "gray"}) {
        item(text("labelled"))->setColorName(text(name));
        WorkspaceIcons icons;
        const QColor color = QNBHoverCell::colorForGel(text(name))->first;
        EXPECT_NE(image("labelled"), image("plain")) << name;
        EXPECT_EQ(image("labelled"), icons.tintedIcon(icons.iconForFile({}), color).pixmap(16).toImage())
            << name;
    }
    item(text("labelled"))->setColorName(text("mauve"));
    EXPECT_EQ(image("labelled"), image("plain")) << "no label's colour";
}

TEST_F(QNBPrefPanePrefHierarchyEditing, SelectingAPresetExpandsAllOfIt)
{
    const QNBPresetRecordPtr record = preset(text("B"));
    record->setFileHierarchy(treeOf({text("one/"), text("one/two/"), text("one/two/three"), text("four")}));
    store({preset(text("A")), record});
    openPane();
    EXPECT_EQ(outlineRows(), QStringList());
    controller().setSelectionIndex(1);
    EXPECT_EQ(outlineRows(), QStringList({text("one"), text("two"), text("three"), text("four")}));
    EXPECT_EQ(outline().selectedRow(), OutlineView::noRow);
}

TEST_F(QNBPrefPanePrefHierarchyEditing, NamesAreIndexedInTheLargeFolderThatIsEdited)
{
    QStringList paths{text("left/"), text("right/")};
    for (std::size_t number = 0; number < QNBHierarchyItem::fewestIndexedNames; ++number) {
        paths << QStringLiteral("left/%1.txt").arg(number);
        paths << QStringLiteral("right/%1.txt").arg(number);
    }
    openTree(paths);
    const QNBHierarchyItemPtr left = item(text("left"));
    const QNBHierarchyItemPtr right = item(text("right"));
    const QVariantMap before = tree();
    EXPECT_FALSE(left->childNames()) << "nothing was renamed";
    rename(text("left/3.txt"), text("5.TXT"));
    EXPECT_EQ(left->childAtIndex(3)->filename(), u"5-1.TXT");
    EXPECT_TRUE(left->childNames());
    expectUndoAndRedo(before, 1);
    rename(text("left/4.txt"), text("3.txt"));
    EXPECT_EQ(left->childAtIndex(4)->filename(), u"3.txt");
    EXPECT_TRUE(left->childNames()) << "undo and redo kept it";

    rename(text("right/3.txt"), text("5.TXT"));
    EXPECT_FALSE(left->childNames());
    EXPECT_TRUE(right->childNames());
    rename(text("left"), text("LEFT"));
    EXPECT_FALSE(right->childNames()) << "a small folder is edited now";

    rename(text("right/6.txt"), text("7.txt"));
    EXPECT_TRUE(right->childNames());
    leavePane();
    EXPECT_FALSE(right->childNames());
    rename(text("right/8.txt"), text("9.txt"));
    EXPECT_TRUE(right->childNames());
    controller().setSelectionIndex(-1);
    EXPECT_FALSE(right->childNames());
}

TEST_F(QNBPrefPanePrefHierarchyEditing, APresetWithoutATreeGetsAnEmptyOne)
{
    openTree({text("a")});
    pane->addPreset();
    list().endEditing();
    ASSERT_TRUE(shownPreset()->fileHierarchy());
    EXPECT_EQ(pane->outlineViewNumberOfChildrenOfItem(outline(), nullptr), 0);
    pane->addFileToPresetHierarchy();
    EXPECT_EQ(names(), QStringList(text("Untitled")));
}

TEST_F(QNBPrefPanePrefHierarchyEditing, WithoutAPresetThereIsNothing)
{
    openTree({text("a")});
    controller().setSelectionIndex(-1);
    EXPECT_EQ(outlineRows(), QStringList());
    EXPECT_EQ(pane->outlineViewNumberOfChildrenOfItem(outline(), nullptr), 0);
    EXPECT_EQ(pane->outlineViewChildOfItem(outline(), 0, nullptr), nullptr);
    EXPECT_EQ(pane->outlineViewObjectValueForTableColumn(outline(), 0, nullptr), QVariant(QString()));
    EXPECT_FALSE(outlet<QPushButton>(text("_addFileButton"))->isEnabled());
    pane->addFileToPresetHierarchy();
    pane->deleteSelectedItemInPresetHierarchy();
    pane->moveSelectedItemInPresetHierarchy(QNBItemStep::Up);
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHierarchyEditing, NothingIsAddedWhereItCouldNotBeStored)
{
    QNBHierarchyItemPtr top = treeOf({text("folder/")});
    for (int depth = 1; depth < QNBHierarchyDepth::deepest - 1; ++depth) {
        const QNBHierarchyItemPtr above = treeOf({text("folder/")});
        above->childAtIndex(0)->addChild(top->childAtIndex(0));
        top = above;
    }
    const QNBPresetRecordPtr record = preset(text("deep"));
    record->setFileHierarchy(top);
    // Without a window, which would lay out thousands of levels.
    store({record});
    pane = std::make_unique<QNBPrefPanePref>(services());
    view.reset(pane->loadMainView());
    select(QStringLiteral("folder/").repeated(QNBHierarchyDepth::deepest - 1));
    EXPECT_TRUE(action("_addFileAction").isEnabled());
    pane->addDirectoryToPresetHierarchy();
    EXPECT_EQ(selectedName(), u"Untitled");
    EXPECT_EQ(lastStep(), u"New Folder");
    const QVariantMap before = tree();

    EXPECT_FALSE(action("_addFileAction").isEnabled());
    EXPECT_FALSE(action("_addFolderAction").isEnabled());
    EXPECT_FALSE(outlet<QPushButton>(text("_addFileButton"))->isEnabled());
    EXPECT_FALSE(outlet<QPushButton>(text("_addFolderButton"))->isEnabled());
    pane->addFileToPresetHierarchy();
    EXPECT_TRUE(tree() == before);
    leavePane();
    EXPECT_EQ(stored().presets.constFirst()->toStored(), shownPreset()->toStored());
}
