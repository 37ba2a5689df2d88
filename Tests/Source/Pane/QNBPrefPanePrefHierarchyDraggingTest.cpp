// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "HierarchyFixture.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

namespace {

class QNBPrefPanePrefHierarchyDragging : public HierarchyFixture
{
protected:
    QNBPrefPanePrefHierarchyDragging()
        : pasteboard(data)
    {
    }

    /// As at the start of a drag.
    void drag(const char *path)
    {
        ASSERT_TRUE(pane->outlineViewWriteItemsToPasteboard(outline(), {item(text(path))}, pasteboard));
    }
    /// An empty \a folder is the top level.
    DragOperations validate(const char *folder, int childIndex) const
    {
        return pane->outlineViewValidateDrop(outline(), info(), target(folder), childIndex);
    }
    bool accept(const char *folder, int childIndex) const
    {
        return pane->outlineViewAcceptDrop(outline(), info(), target(folder), childIndex);
    }
    DraggingInfo info() const { return {data, DragOperation::Every}; }
    OutlineItem target(const char *folder) const
    {
        return *folder ? OutlineItem(item(text(folder))) : OutlineItem();
    }

    QRect rowRect(const char *path) const
    {
        outline().scrollTo(outline().model()->index(0, 0));
        const int height = outline().visualRect(outline().model()->index(0, 0)).height();
        return {outline().viewport()->width() / 2, row(text(path)) * height, 1, height};
    }
    /// The mouse comes, moves and lets go there; whether the drop showed as possible.
    bool dropAt(const QPoint &point)
    {
        const auto send = [this](QEvent &event) {
            QCoreApplication::sendEvent(outline().viewport(), &event);
        };
        QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        send(enter);
        QDragMoveEvent move(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        send(move);
        if (!enter.isAccepted() || !move.isAccepted()) {
            QDragLeaveEvent leave;
            send(leave);
            return false;
        }
        QDropEvent drop(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        send(drop);
        return drop.isAccepted();
    }

    QMimeData data;
    Pasteboard pasteboard;
};

} // namespace

TEST_F(QNBPrefPanePrefHierarchyDragging, WithoutItemsNothingIsDragged)
{
    openTree({text("a")});
    EXPECT_FALSE(pane->outlineViewWriteItemsToPasteboard(outline(), {}, pasteboard));
    EXPECT_EQ(pasteboard.types(), QStringList());
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheFirstItemIsWrittenUnderTheOneTypeWithItsPlaceLeafFirst)
{
    openTree({text("a"), text("folder/"), text("folder/b"), text("folder/c")});
    ASSERT_TRUE(pane->outlineViewWriteItemsToPasteboard(outline(), {item(text("folder/c")), item(text("a"))},
                                                        pasteboard));
    EXPECT_EQ(pasteboard.types(), QStringList(text("QNBHierarchyItemDragType")));
    const PropertyList::ReadResult archived =
        KeyedUnarchiver::unarchiveObject(pasteboard.dataForType(text("QNBHierarchyItemDragType")));
    ASSERT_TRUE(archived);
    const QVariantList path{qlonglong(1), qlonglong(1)};
    EXPECT_EQ(archived.value->toMap(),
              QVariantMap({{text("item"), item(text("folder/c"))->toDictionaryWithUID(true)},
                           {text("indexPath"), path}}));
}

TEST_F(QNBPrefPanePrefHierarchyDragging, DroppingOntoAFileIsRefused)
{
    openTree({text("a"), text("b")});
    drag("a");
    EXPECT_EQ(validate("b", -1), DragOperation::None);
    EXPECT_EQ(validate("a", -1), DragOperation::None);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, DroppingAFolderOntoItselfOrItsDescendantsIsRefused)
{
    openTree({text("folder/"), text("folder/inner/"), text("folder/inner/innermost/"), text("other/")});
    drag("folder");
    EXPECT_EQ(validate("folder", -1), DragOperation::None);
    EXPECT_EQ(validate("folder", 0), DragOperation::None);
    EXPECT_EQ(validate("folder/inner", -1), DragOperation::None);
    EXPECT_EQ(validate("folder/inner/innermost", 0), DragOperation::None);
    EXPECT_EQ(validate("other", -1), DragOperation::Every);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, DroppingAtTopLevelIsAllowed)
{
    openTree({text("folder/"), text("folder/a"), text("b")});
    drag("folder/a");
    for (const int index : {-1, 0, 1, 2})
        EXPECT_EQ(validate("", index), DragOperation::Every) << index;
    EXPECT_EQ(validate("folder", -1), DragOperation::Every) << "its own folder";
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheSecondChildDroppedAtIndexZeroBecomesTheFirst)
{
    openTree({text("folder/"), text("folder/a"), text("folder/b"), text("folder/c")});
    const QVariantMap before = tree();
    const QString uid = item(text("folder/b"))->uid();
    drag("folder/b");
    RowSignals rows(outline());
    ASSERT_TRUE(accept("folder", 0));
    EXPECT_EQ(rows.take(), QStringList({text("+0"), text("-2")})) << "the copy comes, then the source goes";
    EXPECT_EQ(names(text("folder")), QStringList({text("b"), text("a"), text("c")}));
    EXPECT_EQ(item(text("folder/b"))->uid(), uid);
    EXPECT_EQ(selectedName(), u"b");
    EXPECT_EQ(lastStep(), u"Move");
    expectUndoAndRedo(before, 1);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, IndicesMeanTheTreeAsTheUserSawIt)
{
    openTree({text("a"), text("b"), text("c"), text("d")});
    const QVariantMap before = tree();
    drag("a");
    ASSERT_TRUE(accept("", 3));
    EXPECT_EQ(names(), QStringList({text("b"), text("c"), text("a"), text("d")}));
    drag("d");
    ASSERT_TRUE(accept("", 1));
    EXPECT_EQ(names(), QStringList({text("b"), text("d"), text("c"), text("a")}));
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, AnIndexThatIsNoneIsTheFirstPlace)
{
    openTree({text("folder/"), text("folder/a"), text("b")});
    drag("b");
    ASSERT_TRUE(accept("folder", 7));
    EXPECT_EQ(names(text("folder")), QStringList({text("b"), text("a")}));
}

TEST_F(QNBPrefPanePrefHierarchyDragging, BesideANamesakeANumberIsAdded)
{
    openTree({text("one/"), text("one/Notes.TXT"), text("two/"), text("two/notes.txt"), text("notes.txt")});
    const QVariantMap before = tree();
    drag("two/notes.txt");
    ASSERT_TRUE(accept("one", 1));
    EXPECT_EQ(names(text("one")), QStringList({text("Notes.TXT"), text("notes-1.txt")}));
    drag("notes.txt");
    ASSERT_TRUE(accept("one", -1));
    EXPECT_EQ(names(text("one")), QStringList({text("notes-2.txt"), text("Notes.TXT"), text("notes-1.txt")}));
    expectUndoAndRedo(before, 2);
}

TEST_F(QNBPrefPanePrefHierarchyDragging,
       AFolderMovesWithAllItsAttributesAndTheTargetIsExpandedButNotItsChildren)
{
    openTree({text("target/"), text("target/old/"), text("target/old/x"), text("moved/"), text("moved/in/"),
              text("moved/in/leaf")});
    item(text("moved/in/leaf"))->setColorName(text("red"));
    item(text("moved/in/leaf"))->setContentFilename(text("Letter"));
    item(text("moved"))->setCustomPermissions({{text("u"), 7}, {text("g"), 0}, {text("o"), 0}});
    const QVariantMap before = tree();
    const QVariantMap moved = item(text("moved"))->toDictionaryWithUID(true);
    for (const char *folder : {"target/old", "target"})
        outline().collapseItem(item(text(folder)));
    drag("moved");
    ASSERT_TRUE(accept("target", 1));
    EXPECT_EQ(item(text("target/moved"))->toDictionaryWithUID(true), moved);
    EXPECT_TRUE(outline().isItemExpanded(item(text("target"))));
    EXPECT_EQ(outlineRows(),
              QStringList({text("target"), text("old"), text("moved"), text("in"), text("leaf")}));
    EXPECT_EQ(selectedName(), u"moved");
    expectUndoAndRedo(before, 1);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, FoldersBelowStayOpenAndClosedThroughADragItsUndoAndItsRedo)
{
    openTree({text("target/"), text("moved/"), text("moved/open/"), text("moved/open/x"), text("moved/shut/"),
              text("moved/shut/within/"), text("moved/shut/within/y")});
    outline().collapseItem(item(text("moved/shut")));
    drag("moved");
    ASSERT_TRUE(accept("target", -1));
    const QStringList moved{text("target"), text("moved"), text("open"), text("x"), text("shut")};
    EXPECT_EQ(outlineRows(), moved);
    EXPECT_TRUE(outline().isItemExpanded(item(text("target/moved/shut/within")))) << "inside a closed folder";

    // What is opened and closed meanwhile stays so.
    outline().collapseItem(item(text("target/moved/open")));
    outline().expandItem(item(text("target/moved/shut")));
    pane->undo();
    EXPECT_EQ(outlineRows(), QStringList({text("target"), text("moved"), text("open"), text("shut"),
                                          text("within"), text("y")}));
    outline().expandItem(item(text("moved/open")));
    outline().collapseItem(item(text("moved/shut")));
    pane->redo();
    EXPECT_EQ(outlineRows(), moved);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, AClosedFolderStaysClosedWhereItIsDropped)
{
    openTree({text("target/"), text("moved/"), text("moved/x")});
    outline().collapseItem(item(text("moved")));
    drag("moved");
    ASSERT_TRUE(accept("target", 0));
    EXPECT_EQ(outlineRows(), QStringList({text("target"), text("moved")}));
    pane->undo();
    EXPECT_EQ(outlineRows(), QStringList({text("target"), text("moved")}));
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheFormerFolderOfTheLastChildShowsNoTriangle)
{
    openTree({text("folder/"), text("folder/a")});
    drag("folder/a");
    ASSERT_TRUE(accept("", 0));
    EXPECT_EQ(outlineRows(), QStringList({text("a"), text("folder")}));
    EXPECT_FALSE(outline().model()->hasChildren(outline().model()->index(1, 0)));
}

TEST_F(QNBPrefPanePrefHierarchyDragging, ADropWhereTheItemIsAlreadyMakesNoStep)
{
    openTree({text("a"), text("b"), text("c")});
    const QVariantMap before = tree();
    for (const int index : {1, 2}) {
        drag("b");
        EXPECT_TRUE(accept("", index));
    }
    drag("a");
    EXPECT_TRUE(accept("", -1));
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(lastStep(), QString());
    EXPECT_EQ(selectedName(), u"a");
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheSameDataCanBeDroppedAfterAnUndo)
{
    openTree({text("folder/"), text("a")});
    drag("a");
    ASSERT_TRUE(accept("folder", -1));
    const QNBHierarchyItemPtr first = item(text("folder/a"));
    pane->undo();
    ASSERT_TRUE(accept("folder", -1));
    EXPECT_NE(item(text("folder/a")), first) << "each drop makes a copy of its own";
    EXPECT_EQ(item(text("folder/a"))->uid(), first->uid());
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheMouseDropsBetweenRowsAndOntoFolders)
{
    openTree({text("folder/"), text("folder/a"), text("b"), text("c")});
    const QVariantMap before = tree();
    drag("c");
    EXPECT_TRUE(dropAt(rowRect("folder/a").topLeft()));
    EXPECT_EQ(names(text("folder")), QStringList({text("c"), text("a")}));
    EXPECT_EQ(selectedName(), u"c");
    drag("b");
    EXPECT_TRUE(dropAt(rowRect("folder").center()));
    EXPECT_EQ(names(text("folder")), QStringList({text("b"), text("c"), text("a")}));
    drag("folder/a");
    EXPECT_TRUE(dropAt(rowRect("folder").topLeft()));
    EXPECT_EQ(names(), QStringList({text("a"), text("folder")}));
    expectUndoAndRedo(before, 3);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheMouseCannotDropAFolderIntoItself)
{
    openTree({text("folder/"), text("folder/inner/"), text("folder/inner/a"), text("b")});
    const QVariantMap before = tree();
    drag("folder");
    EXPECT_FALSE(dropAt(rowRect("folder").center()));
    EXPECT_FALSE(dropAt(rowRect("folder/inner").center()));
    EXPECT_FALSE(dropAt(rowRect("folder/inner/a").topLeft()));
    EXPECT_EQ(tree(), before);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheMouseCannotDropOntoAFile)
{
    openTree({text("folder/"), text("a"), text("b")});
    const QVariantMap before = tree();
    for (const char *dragged : {"folder", "b"}) {
        drag(dragged);
        EXPECT_FALSE(dropAt(rowRect("a").center())) << dragged;
    }
    EXPECT_EQ(tree(), before);
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheMouseMakesTheSecondChildTheFirst)
{
    openTree({text("folder/"), text("folder/a"), text("folder/b"), text("c")});
    drag("folder/b");
    EXPECT_TRUE(dropAt(rowRect("folder/a").topLeft()));
    EXPECT_EQ(names(text("folder")), QStringList({text("b"), text("a")}));
}

TEST_F(QNBPrefPanePrefHierarchyDragging, TheMouseCannotDropWhatIsNotThePanesOwn)
{
    openTree({text("folder/"), text("a")});
    const QVariantMap before = tree();
    data.setText(text("a"));
    EXPECT_FALSE(dropAt(rowRect("folder").center()));
    drag("a");
    QByteArray archive = data.data(text("QNBHierarchyItemDragType"));
    data.clear();
    data.setData(text("QNBHierarchyItemDragType"), archive);
    EXPECT_FALSE(dropAt(rowRect("folder").center()));
    EXPECT_EQ(tree(), before);
}
