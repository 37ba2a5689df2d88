// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBOutlineViewAdditions.h"

#include "Tests/Toolkit/FakeTree.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <optional>

namespace {

using NodePtr = FakeTree::NodePtr;

QStringList loggedLines;

void keepLogged(QtMsgType, const QMessageLogContext &, const QString &line)
{
    loggedLines << line;
}

/// An outline of src(x, y), docs, notes in a window with another control, all rows expanded and editable.
class QNBOutlineViewTest : public ::testing::Test
{
protected:
    QNBOutlineViewTest()
    {
        src = tree.root->add(QStringLiteral("src"));
        src->add(QStringLiteral("x"));
        src->add(QStringLiteral("y"));
        tree.root->add(QStringLiteral("docs"));
        tree.root->add(QStringLiteral("notes"));
        tree.isEditable = true;
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(&outline);
        layout->addWidget(&other);
        outline.setDataSource(&tree);
        outline.expandItem(src);
        window.resize(300, 300);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        outline.setFocus();
    }

    ~QNBOutlineViewTest() override { outline.setDataSource(nullptr); }

    QString nameAtRow(int row) const
    {
        const OutlineItem item = outline.itemAtRow(row);
        return item ? static_cast<FakeTree::Node *>(item.get())->name : QStringLiteral("(none)");
    }
    QString selectedName() const { return nameAtRow(outline.selectedRow()); }

    QPoint pointInRow(int row) const
    {
        QModelIndex index = outline.model()->index(0, 0);
        for (; row > 0; --row)
            index = outline.indexBelow(index);
        return outline.visualRect(index).center();
    }
    QPoint pointBelowTheRows() const { return outline.viewport()->rect().bottomLeft() + QPoint(5, -5); }

    QLineEdit *editor() const { return outline.viewport()->findChild<QLineEdit *>(); }
    /// As the keyboard does it: to whichever widget listens to it.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void rightClick(const QPoint &point)
    {
        QTest::mouseClick(outline.viewport(), Qt::RightButton, {}, point);
        QContextMenuEvent request(QContextMenuEvent::Mouse, point, outline.viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(outline.viewport(), &request);
    }

    FakeTree tree;
    NodePtr src;
    QWidget window;
    QNBOutlineView outline;
    QPushButton other;
    QMenu menu;
    QAbstractItemModelTester tester{outline.model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(QNBOutlineViewTest, PlainDeleteOrBackspaceInTheOutlineDoesNothing)
{
    outline.selectRow(1);
    for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_Backspace}) {
        for (const Qt::KeyboardModifiers modifiers :
             {Qt::NoModifier, Qt::ShiftModifier, Qt::AltModifier, Qt::MetaModifier, Qt::KeypadModifier}) {
            QKeyEvent event(QEvent::KeyPress, key, modifiers);
            QCoreApplication::sendEvent(&outline, &event);
            EXPECT_TRUE(event.isAccepted()) << "the key is not passed on";
        }
    }
    EXPECT_TRUE(tree.rowsToDelete.isEmpty());
    EXPECT_EQ(selectedName(), u"x");
    EXPECT_FALSE(outline.isEditing());
}

TEST_F(QNBOutlineViewTest, CommandDeleteDeletesTheSelectedRowThroughTheDelegate)
{
    outline.selectRow(3);
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(tree.rowsToDelete, QList<int>({3}));
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(tree.rowsToDelete, QList<int>({3, 3}));
    outline.selectRow(OutlineView::noRow);
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(tree.rowsToDelete.constLast(), OutlineView::noRow);
    EXPECT_EQ(outline.numberOfRows(), 5) << "the view itself takes nothing away";
}

TEST_F(QNBOutlineViewTest, CommandDeleteReachesTheOutlineThoughAMenuShowsItAsShortcut)
{
    QAction action;
    action.setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Delete), QKeySequence(Qt::Key_Delete)});
    window.addAction(&action);
    QSignalSpy triggered(&action, &QAction::triggered);
    outline.selectRow(1);
    press(Qt::Key_Delete, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(tree.rowsToDelete, QList<int>({1}));
    EXPECT_EQ(triggered.count(), 0);
    other.setFocus();
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(triggered.count(), 1) << "elsewhere it is a shortcut as ever";
}

TEST_F(QNBOutlineViewTest, CommandDeleteWhileEditingIsTheEditors)
{
    outline.selectRow(4);
    press(Qt::Key_Return);
    ASSERT_TRUE(editor());
    press(Qt::Key_Home);
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_TRUE(tree.rowsToDelete.isEmpty());
    EXPECT_EQ(editor()->text(), u"");
}

TEST_F(QNBOutlineViewTest, ReturnOnASelectedRowStartsEditingItsName)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        outline.selectRow(3);
        press(key, key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
        ASSERT_TRUE(outline.isEditing());
        EXPECT_EQ(editor()->text(), u"docs");
        EXPECT_EQ(editor()->selectedText(), u"docs");
        EXPECT_TRUE(editor()->hasFocus());
        press(Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
    }
}

TEST_F(QNBOutlineViewTest, ReturnStartsEditingWhateverTheModifiers)
{
    for (const Qt::KeyboardModifier modifier :
         {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
        outline.selectRow(3);
        press(Qt::Key_Return, modifier);
        ASSERT_TRUE(outline.isEditing()) << modifier;
        EXPECT_EQ(editor()->selectedText(), u"docs");
        press(Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
    }
}

TEST_F(QNBOutlineViewTest, ReturnWithoutASelectedRowOrAnEditableOneDoesNothing)
{
    outline.selectRow(OutlineView::noRow);
    press(Qt::Key_Return);
    EXPECT_FALSE(outline.isEditing());
    tree.isEditable = false;
    outline.selectRow(0);
    loggedLines.clear();
    const QtMessageHandler before = qInstallMessageHandler(keepLogged);
    press(Qt::Key_Return);
    qInstallMessageHandler(before);
    EXPECT_FALSE(outline.isEditing());
    EXPECT_EQ(loggedLines, QStringList());
}

TEST_F(QNBOutlineViewTest, ReturnWhileEditingCommitsAndLeavesNoRowInEditing)
{
    outline.selectRow(1);
    press(Qt::Key_Return);
    QTest::keyClicks(editor(), QStringLiteral("renamed"));
    press(Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
    EXPECT_FALSE(outline.isEditing());
    EXPECT_EQ(nameAtRow(1), u"renamed");
    EXPECT_EQ(outline.selectedRow(), 1);
    EXPECT_TRUE(outline.hasFocus()) << "the outline has the keyboard again";
    press(Qt::Key_Down);
    EXPECT_EQ(outline.selectedRow(), 2);
}

TEST_F(QNBOutlineViewTest, ReturnGivesTheOutlineTheKeyboardThoughTheEditorHasLostIt)
{
    outline.selectRow(1);
    press(Qt::Key_Return);
    QPointer<QLineEdit> open = editor();
    QTest::keyClicks(open, QStringLiteral("renamed"));
    press(Qt::Key_Return);
    // What Return does in the editor is done when the key was handled; the keyboard is elsewhere by then.
    open->removeEventFilter(outline.itemDelegate());
    other.setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&open] { return !open; }));
    EXPECT_TRUE(outline.hasFocus());
    EXPECT_EQ(nameAtRow(1), u"renamed");
}

TEST_F(QNBOutlineViewTest, TabWhileEditingMovesEditingOn)
{
    outline.selectRow(1);
    press(Qt::Key_Return);
    QTest::keyClicks(editor(), QStringLiteral("first"));
    press(Qt::Key_Tab);
    EXPECT_EQ(nameAtRow(1), u"first");
    EXPECT_EQ(selectedName(), u"y");
    ASSERT_TRUE(outline.isEditing());
    ASSERT_TRUE(QTest::qWaitFor([this] {
        return outline.viewport()->findChildren<QLineEdit *>().size() == 1 && editor()->text() == u"y";
    }));
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(selectedName(), u"first");
    EXPECT_TRUE(outline.isEditing());
}

TEST_F(QNBOutlineViewTest, AClickElsewhereEndsEditingWithoutTakingTheKeyboardBack)
{
    outline.selectRow(1);
    press(Qt::Key_Return);
    QTest::keyClicks(editor(), QStringLiteral("typed"));
    other.setFocus(Qt::MouseFocusReason);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
    EXPECT_EQ(nameAtRow(1), u"typed");
    EXPECT_TRUE(other.hasFocus());
}

TEST_F(QNBOutlineViewTest, OtherKeysAreLoggedByTheirPlatformCodeAndPassedOn)
{
    outline.selectRow(0);
    loggedLines.clear();
    const QtMessageHandler before = qInstallMessageHandler(keepLogged);
    press(Qt::Key_Down);
    press(Qt::Key_N);
    press(Qt::Key_Backspace);
    press(Qt::Key_Delete, Qt::ControlModifier);
    qInstallMessageHandler(before);
    EXPECT_EQ(loggedLines, QStringList({QStringLiteral("kestroke: 125"), QStringLiteral("kestroke: 45")}));
    EXPECT_EQ(selectedName(), u"notes") << "the letter searches";
}

TEST_F(QNBOutlineViewTest, ArrowKeysMoveAndOpenAndCloseFolders)
{
    outline.selectRow(0);
    press(Qt::Key_Left);
    EXPECT_FALSE(outline.isItemExpanded(src));
    EXPECT_EQ(outline.numberOfRows(), 3);
    press(Qt::Key_Right);
    EXPECT_TRUE(outline.isItemExpanded(src));
    press(Qt::Key_Down);
    EXPECT_EQ(selectedName(), u"x");
    press(Qt::Key_Left);
    EXPECT_EQ(selectedName(), u"src") << "from a child to its folder";
    press(Qt::Key_End);
    EXPECT_EQ(selectedName(), u"notes");
}

TEST_F(QNBOutlineViewTest, RightClickOnAnUnselectedRowSelectsItBeforeTheMenuShows)
{
    outline.setMenu(&menu);
    menu.addAction(QStringLiteral("One"));
    outline.selectRow(0);
    other.setFocus();
    QStringList seenByTheMenu;
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [this, &seenByTheMenu] {
        seenByTheMenu << selectedName() << (outline.hasFocus() ? QStringLiteral("focused") : QString());
    });
    rightClick(pointInRow(2));
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(seenByTheMenu, QStringList({QStringLiteral("y"), QStringLiteral("focused")}));
    EXPECT_EQ(menu.pos(), outline.viewport()->mapToGlobal(pointInRow(2)));
    menu.close();
}

TEST_F(QNBOutlineViewTest, RightClickSelectsTheRowAloneWhateverTheModifiers)
{
    outline.selectRow(2);
    for (const Qt::KeyboardModifiers modifiers : {Qt::ControlModifier, Qt::ShiftModifier}) {
        QTest::mouseClick(outline.viewport(), Qt::RightButton, modifiers, pointInRow(2));
        EXPECT_EQ(outline.selectedRow(), 2);
        QTest::mouseClick(outline.viewport(), Qt::RightButton, modifiers, pointInRow(1));
        EXPECT_EQ(outline.selectedRow(), 1);
        QTest::mouseClick(outline.viewport(), Qt::RightButton, modifiers, pointInRow(2));
    }
}

TEST_F(QNBOutlineViewTest, RightClickBelowTheLastRowClearsTheSelection)
{
    outline.setMenu(&menu);
    menu.addAction(QStringLiteral("One"));
    outline.selectRow(2);
    rightClick(pointBelowTheRows());
    EXPECT_EQ(outline.selectedRow(), OutlineView::noRow);
    EXPECT_TRUE(menu.isVisible());
    menu.close();
}

TEST_F(QNBOutlineViewTest, RightClickCommitsWhatIsBeingTyped)
{
    outline.selectRow(1);
    press(Qt::Key_Return);
    QTest::keyClicks(editor(), QStringLiteral("typed"));
    rightClick(pointInRow(3));
    EXPECT_EQ(nameAtRow(1), u"typed");
    EXPECT_EQ(selectedName(), u"docs");
    EXPECT_FALSE(outline.isEditing());
}

TEST_F(QNBOutlineViewTest, RightClickWithoutAMenuOnlySelects)
{
    rightClick(pointInRow(3));
    EXPECT_EQ(selectedName(), u"docs");
}

TEST_F(QNBOutlineViewTest, TheMenuKeyAndItsTwinOpenTheMenuAtTheSelectedRow)
{
    outline.setMenu(&menu);
    menu.addAction(QStringLiteral("One"));
    outline.selectRow(2);
    const QRect row = outline.visualRect(outline.currentIndex());
    const QPoint expected = outline.viewport()->mapToGlobal(row.bottomLeft());

    QContextMenuEvent byMenuKey(QContextMenuEvent::Keyboard, outline.rect().center(),
                                outline.mapToGlobal(outline.rect().center()));
    QCoreApplication::sendEvent(&outline, &byMenuKey);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.pos(), expected);
    EXPECT_EQ(selectedName(), u"y");
    menu.close();

    press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.pos(), expected);
    menu.close();

    outline.selectRow(OutlineView::noRow);
    press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.pos(), outline.viewport()->mapToGlobal(QPoint(0, 0)));
    menu.close();
}

} // namespace
