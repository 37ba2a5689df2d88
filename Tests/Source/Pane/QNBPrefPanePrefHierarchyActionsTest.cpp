// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "HierarchyFixture.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

namespace {

class QNBPrefPanePrefHierarchyActions : public HierarchyFixture
{
protected:
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
    {
        QTest::keyClick(&outline(), key, modifiers);
    }
    QMenu &menu(const char *name) const { return *outlet<QMenu>(text(name)); }
    void expectMoves(bool up, bool down, bool into, bool outOf) const
    {
        EXPECT_EQ(action("_moveItemUpAction").isEnabled(), up);
        EXPECT_EQ(action("_moveItemDownAction").isEnabled(), down);
        EXPECT_EQ(action("_moveItemIntoFolderAction").isEnabled(), into);
        EXPECT_EQ(action("_moveItemOutOfFolderAction").isEnabled(), outOf);
    }
};

} // namespace

TEST_F(QNBPrefPanePrefHierarchyActions, KeysMoveTheItemAmongItsSiblings)
{
    openTree({text("a"), text("b"), text("c")});
    const QVariantMap before = tree();
    select(text("a"));
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(names(), QStringList({text("b"), text("a"), text("c")}));
    EXPECT_EQ(selectedName(), u"a");
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(names(), QStringList({text("b"), text("c"), text("a")}));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(names(), QStringList({text("b"), text("a"), text("c")}));
    EXPECT_EQ(selectedName(), u"a");
    EXPECT_EQ(lastStep(), u"Move");
    expectUndoAndRedo(before, 3);
}

TEST_F(QNBPrefPanePrefHierarchyActions, KeysMoveTheItemIntoTheFolderAboveAndOutOfItAgain)
{
    openTree({text("folder/"), text("folder/x"), text("a"), text("b")});
    const QVariantMap before = tree();
    outline().collapseItem(item(text("folder")));
    select(text("a"));
    press(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(names(text("folder")), QStringList({text("x"), text("a")}));
    EXPECT_EQ(selectedName(), u"a");
    EXPECT_TRUE(outline().isItemExpanded(item(text("folder"))));
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(names(), QStringList({text("folder"), text("a"), text("b")}));
    EXPECT_EQ(selectedName(), u"a");
    EXPECT_EQ(tree(), before);
    pane->undo();
    pane->undo();
    EXPECT_EQ(tree(), before);
}

TEST_F(QNBPrefPanePrefHierarchyActions, AFolderThatIsMovedByKeyStaysAsExpandedAsItWas)
{
    openTree({text("first"), text("folder/"), text("folder/open/"), text("folder/open/x"),
              text("folder/shut/"), text("folder/shut/y")});
    outline().collapseItem(item(text("folder/shut")));
    select(text("folder"));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(outlineRows(),
              QStringList({text("folder"), text("open"), text("x"), text("shut"), text("first")}));
    EXPECT_EQ(selectedName(), u"folder");
}

TEST_F(QNBPrefPanePrefHierarchyActions, WhereAnItemCannotMoveTheKeysDoNothing)
{
    openTree({text("a"), text("b")});
    const QVariantMap before = tree();
    select(text("b"));
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Left, Qt::Key_Right})
        press(key, Qt::AltModifier);
    EXPECT_EQ(selectedName(), u"b") << "nor is another item selected, which would be moved next";
    select(text("a"));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(selectedName(), u"a");
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHierarchyActions, MovesAreEnabledWhereTheyArePossible)
{
    openTree({text("folder/"), text("folder/x"), text("a"), text("b")});
    expectMoves(false, false, false, false);
    select(text("folder"));
    expectMoves(false, true, false, false);
    select(text("folder/x"));
    expectMoves(false, false, false, true);
    select(text("a"));
    expectMoves(true, true, true, false);
    select(text("b"));
    expectMoves(true, false, false, false);
    pane->moveSelectedItemInPresetHierarchy(QNBItemStep::Up);
    expectMoves(true, true, true, false);
    pane->undo();
    expectMoves(true, false, false, false);
}

TEST_F(QNBPrefPanePrefHierarchyActions, NewItemsByKeyFromWhereverThereIsNoText)
{
    openTree({text("a")});
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("a")}));
    outline().endEditing();
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(names(), QStringList({text("Untitled"), text("Untitled-1"), text("a")}));
    EXPECT_TRUE(item(text("Untitled-1"))->isDirectory());
    outline().endEditing();
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(names(text("Untitled-1")), QStringList(text("Untitled")));
    outline().endEditing();

    auto *description = outlet<QPlainTextEdit>(text("_ui_presetDescription"));
    description->setFocus();
    const QVariantMap before = tree();
    QTest::keyClick(description, Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(tree(), before);
}

TEST_F(QNBPrefPanePrefHierarchyActions, KeysDoNothingToItemsWhileANameIsTyped)
{
    openTree({text("a"), text("b"), text("folder/"), text("c")});
    const QVariantMap before = tree();
    select(text("b"));
    press(Qt::Key_F2, Qt::NoModifier);
    ASSERT_TRUE(editor());
    QTest::keyClick(editor(), Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(editor(), Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(editor(), Qt::Key_Delete, Qt::ControlModifier);
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right})
        QTest::keyClick(editor(), key, Qt::AltModifier);
    ASSERT_TRUE(editor());
    QTest::keyClick(editor(), Qt::Key_Escape);
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHierarchyActions, KeysWorkOnTheButtonsBelowTheOutline)
{
    openTree({text("a"), text("b"), text("c")});
    select(text("a"));
    auto *button = outlet<QPushButton>(text("_itemActionsButton"));
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(names(), QStringList({text("b"), text("a"), text("c")}));
    QTest::keyClick(button, Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(names(), QStringList({text("b"), text("c")}));
    QTest::keyClick(button, Qt::Key_F2);
    EXPECT_TRUE(outline().isEditing());
}

TEST_F(QNBPrefPanePrefHierarchyActions, MenusShowTheKeys)
{
    openTree({text("a")});
    const std::pair<const char *, const char *> keys[] = {{"_addFileAction", "Ctrl+N"},
                                                          {"_addFolderAction", "Ctrl+Shift+N"},
                                                          {"_renameItemAction", "F2"},
                                                          {"_deleteItemAction", "Ctrl+Del"},
                                                          {"_moveItemUpAction", "Alt+Up"},
                                                          {"_moveItemDownAction", "Alt+Down"},
                                                          {"_moveItemIntoFolderAction", "Alt+Right"},
                                                          {"_moveItemOutOfFolderAction", "Alt+Left"}};
    for (const auto &[name, key] : keys) {
        EXPECT_EQ(action(name).shortcut(), QKeySequence(text(key))) << name;
        EXPECT_TRUE(menu("_itemActionsMenu").actions().contains(&action(name))) << name;
        EXPECT_TRUE(menu("_ui_presetContextualMenu").actions().contains(&action(name))) << name;
    }
}

TEST_F(QNBPrefPanePrefHierarchyActions, TheActionsMenuIsValidatedWhenItOpens)
{
    openTree({text("a"), text("b")});
    EXPECT_EQ(outlet<QPushButton>(text("_itemActionsButton"))->menu(), &menu("_itemActionsMenu"));
    const auto expectEnabled = [this](bool isSelected) {
        Q_EMIT menu("_itemActionsMenu").aboutToShow();
        EXPECT_EQ(action("_renameItemAction").isEnabled(), isSelected);
        EXPECT_EQ(action("_deleteItemAction").isEnabled(), isSelected);
        EXPECT_FALSE(action("_undoAction").isEnabled()) << "there is nothing to undo";
    };
    expectEnabled(false);
    select(text("a"));
    expectEnabled(true);
}

TEST_F(QNBPrefPanePrefHierarchyActions, MenuEntriesDoWhatTheySay)
{
    openTree({text("folder/"), text("a"), text("b")});
    select(text("b"));
    action("_moveItemUpAction").trigger();
    action("_moveItemIntoFolderAction").trigger();
    EXPECT_EQ(names(text("folder")), QStringList(text("b")));
    action("_moveItemOutOfFolderAction").trigger();
    action("_moveItemDownAction").trigger();
    EXPECT_EQ(names(), QStringList({text("folder"), text("a"), text("b")}));
    action("_renameItemAction").trigger();
    typeName(text("renamed"));
    EXPECT_EQ(selectedName(), u"renamed");
    action("_deleteItemAction").trigger();
    EXPECT_EQ(names(), QStringList({text("folder"), text("a")}));
    action("_addFolderAction").trigger();
    outline().endEditing();
    EXPECT_EQ(lastStep(), u"New Folder");
}

TEST_F(QNBPrefPanePrefHierarchyActions, ARightClickShowsTheContextualMenuForTheRowBelowIt)
{
    openTree({text("a"), text("b")});
    const QPoint point = outline().visualRect(outline().model()->index(1, 0)).center();
    QTest::mouseClick(outline().viewport(), Qt::RightButton, {}, point);
    QContextMenuEvent request(QContextMenuEvent::Mouse, point, outline().viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(outline().viewport(), &request);
    EXPECT_TRUE(menu("_ui_presetContextualMenu").isVisible());
    EXPECT_EQ(selectedName(), u"b");
    EXPECT_TRUE(action("_renameItemAction").isEnabled());
    menu("_ui_presetContextualMenu").close();
}

TEST_F(QNBPrefPanePrefHierarchyActions, ShiftF10AndTheMenuKeyShowTheContextualMenuAtTheRow)
{
    openTree({text("a"), text("b")});
    select(text("b"));
    QMenu &contextual = menu("_ui_presetContextualMenu");
    const QRect row = outline().visualRect(outline().model()->index(1, 0));
    const QPoint expected = outline().viewport()->mapToGlobal(row.bottomLeft());
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_TRUE(contextual.isVisible());
    EXPECT_EQ(contextual.pos().y(), expected.y());
    contextual.close();

    QContextMenuEvent byMenuKey(QContextMenuEvent::Keyboard, {}, {});
    QCoreApplication::sendEvent(&outline(), &byMenuKey);
    EXPECT_TRUE(contextual.isVisible());
    contextual.close();
}
