// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineView.h"

#include "OutlineViewFixture.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using NodePtr = FakeTree::NodePtr;
using OutlineViewTest = OutlineViewFixture;

TEST_F(OutlineViewTest, RowsAreCountedAsOnScreen)
{
    EXPECT_EQ(rows(), u"docs empty src");
    view.expandItem(docs);
    EXPECT_EQ(rows(), u"docs a b empty src");
    EXPECT_EQ(view.rowForItem(src), 4);
    EXPECT_EQ(view.rowForItem(docs->children[1]), 2);
    EXPECT_EQ(view.rowForItem(docs->children[1]->children[0]), OutlineView::noRow);
    EXPECT_EQ(view.itemAtRow(5), nullptr);
    EXPECT_EQ(view.itemAtRow(-1), nullptr);
}

TEST_F(OutlineViewTest, ShowsEveryCharacterAndEditsTheTextItself)
{
    const QString text = QStringLiteral("a\u202E\u009B\nb");
    tree.root->add(text);
    view.reloadData();
    const QModelIndex index = view.model()->index(3, 0);
    EXPECT_EQ(index.data(Qt::DisplayRole).toString(), u"a<U+202E><U+009B>␊b");
    EXPECT_EQ(index.data(Qt::EditRole).toString(), text);
}

TEST_F(OutlineViewTest, RowsAreFoundOutsideTheVisiblePart)
{
    const NodePtr many = tree.root->add(QStringLiteral("many"));
    for (int i = 0; i < 500; ++i)
        many->add(QString::number(i));
    view.reloadData();
    view.expandItem(many);
    EXPECT_EQ(nameAtRow(4 + 499), u"499");
    EXPECT_EQ(view.rowForItem(many->children[499]), 503);
    view.scrollToBottom();
    EXPECT_EQ(nameAtRow(0), u"docs");
    EXPECT_EQ(view.rowForItem(docs), 0);
    EXPECT_EQ(view.numberOfRows(), 504);
}

TEST_F(OutlineViewTest, ExpandsAndCollapses)
{
    view.expandItem(docs, true);
    EXPECT_EQ(rows(), u"docs a b deep empty src");
    view.collapseItem(docs);
    EXPECT_EQ(rows(), u"docs empty src");
    view.expandItem(nullptr, true);
    EXPECT_EQ(rows(), u"docs a b deep empty src x y");
    EXPECT_TRUE(view.isItemExpanded(src));
    EXPECT_FALSE(view.isItemExpanded(empty));
}

TEST_F(OutlineViewTest, AnItemThatIsClosedOverTheSelectionIsSelected)
{
    view.expandItem(nullptr, true);
    const int deep = view.rowForItem(docs) + 3;
    ASSERT_EQ(nameAtRow(deep), u"deep");
    view.selectRow(deep);
    tree.selectionChanges = 0;
    view.collapseItem(src);
    EXPECT_EQ(nameAtRow(view.selectedRow()), u"deep");
    EXPECT_EQ(tree.selectionChanges, 0);

    const QRect row = view.visualRect(view.model()->index(0, 0));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                      {row.left() - view.indentation() / 2, row.center().y()});
    ASSERT_EQ(rows(), u"docs empty src");
    EXPECT_EQ(nameAtRow(view.selectedRow()), u"docs");
    EXPECT_EQ(tree.selectionChanges, 1);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(nameAtRow(view.selectedRow()), u"empty");
}

TEST_F(OutlineViewTest, ClosingAnItemSelectsNothingByItself)
{
    view.expandItem(docs);
    view.collapseItem(docs);
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
}

TEST_F(OutlineViewTest, ItemsWithoutChildrenShowNoDisclosureTriangle)
{
    const QAbstractItemModel &model = *view.model();
    EXPECT_TRUE(model.hasChildren(model.index(0, 0)));
    EXPECT_FALSE(model.hasChildren(model.index(1, 0)));
    empty->add(QStringLiteral("now"));
    view.reloadItem(empty, true);
    EXPECT_TRUE(model.hasChildren(model.index(1, 0)));
    view.expandItem(empty);
    EXPECT_EQ(rows(), u"docs empty now src");
}

TEST_F(OutlineViewTest, ReloadSignalsJustTheDifferences)
{
    view.expandItem(nullptr, true);
    QSignalSpy inserted(view.model(), &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(view.model(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(view.model(), &QAbstractItemModel::modelReset);
    view.reloadData();
    EXPECT_EQ(inserted.count() + removed.count(), 0);

    src->children.insert(src->children.begin() + 1, std::make_shared<FakeTree::Node>());
    src->children[1]->name = QStringLiteral("new");
    docs->children.erase(docs->children.begin());
    view.reloadData();
    EXPECT_EQ(rows(), u"docs b deep empty src x new y");
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(reset.count(), 0);
}

TEST_F(OutlineViewTest, ReloadKeepsExpansionByItem)
{
    view.expandItem(nullptr, true);
    view.collapseItem(src);
    // Another order, another parent: what is expanded goes with its item.
    const NodePtr b = docs->children[1];
    docs->children.pop_back();
    empty->children.push_back(b);
    std::swap(tree.root->children[0], tree.root->children[2]);
    view.reloadData();
    view.expandItem(empty);
    EXPECT_EQ(rows(), u"src empty b deep docs a");
}

TEST_F(OutlineViewTest, ReloadKeepsSelectionByRow)
{
    view.selectRow(1);
    tree.selectionChanges = 0;
    tree.root->children.insert(tree.root->children.begin(), std::make_shared<FakeTree::Node>());
    view.reloadData();
    EXPECT_EQ(view.selectedRow(), 1);
    EXPECT_EQ(nameAtRow(1), u"docs");
    EXPECT_EQ(tree.selectionChanges, 1) << "another item is selected now";
}

TEST_F(OutlineViewTest, ReloadWithFewerRowsThanTheSelectedOneSelectsNothing)
{
    view.selectRow(2);
    tree.root->children.pop_back();
    view.reloadData();
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
}

TEST_F(OutlineViewTest, AnotherTreeStartsCollapsedAndUnselected)
{
    view.expandItem(nullptr, true);
    view.selectRow(0);
    tree.selectionChanges = 0;
    tree.root = std::make_shared<FakeTree::Node>();
    tree.root->add(QStringLiteral("other"))->add(QStringLiteral("inside"));
    view.reloadData();
    EXPECT_EQ(rows(), u"other");
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
    EXPECT_EQ(tree.selectionChanges, 1);
}

TEST_F(OutlineViewTest, SelectionIsToldToTheDataSource)
{
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                      view.visualRect(view.model()->index(0, 0)).center());
    EXPECT_EQ(view.selectedRow(), 0);
    EXPECT_EQ(tree.selectionChanges, 1);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.selectedRow(), 1);
    EXPECT_EQ(tree.selectionChanges, 2);
    view.selectRow(99);
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
}

TEST_F(OutlineViewTest, WithNothingSelectedKeysSelectARow)
{
    view.expandItem(src);
    const std::pair<Qt::Key, int> keys[] = {{Qt::Key_Down, 0}, {Qt::Key_Home, 0}, {Qt::Key_PageDown, 0},
                                            {Qt::Key_Up, 4},   {Qt::Key_End, 4},  {Qt::Key_PageUp, 4}};
    for (const auto &[key, row] : keys) {
        view.selectRow(OutlineView::noRow);
        // As it is when the view gets the keyboard.
        view.selectionModel()->setCurrentIndex(view.model()->index(0, 0), QItemSelectionModel::NoUpdate);
        ASSERT_EQ(view.selectedRow(), OutlineView::noRow);
        tree.selectionChanges = 0;
        QTest::keyClick(&view, key);
        EXPECT_EQ(view.selectedRow(), row) << key;
        EXPECT_EQ(tree.selectionChanges, 1) << key;
    }
    view.selectRow(OutlineView::noRow);
    QTest::keyClick(&view, Qt::Key_Shift);
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
    view.setDataSource(nullptr);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow) << "there is none";
}

TEST_F(OutlineViewTest, TheEditKeyNeedsASelectedRow)
{
    tree.isEditable = true;
    view.selectionModel()->setCurrentIndex(view.model()->index(0, 0), QItemSelectionModel::NoUpdate);
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_FALSE(view.isEditing());
    view.selectRow(1);
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_TRUE(view.isEditing());
}

TEST_F(OutlineViewTest, IsReadOnlyUnlessTheDataSourceAllowsEditing)
{
    view.selectRow(0);
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_FALSE(view.isEditing());
    EXPECT_FALSE(view.model()->setData(view.currentIndex(), QStringLiteral("no")));

    tree.isEditable = true;
    view.editRow(0);
    ASSERT_TRUE(view.isEditing());
    QTest::keyClicks(view.viewport()->findChild<QLineEdit *>(), QStringLiteral("papers"));
    view.endEditing();
    EXPECT_EQ(docs->name, u"papers");
    EXPECT_FALSE(view.isEditing());
}

TEST_F(OutlineViewTest, WithoutDataSourceThereAreNoRows)
{
    view.setDataSource(nullptr);
    EXPECT_EQ(view.numberOfRows(), 0);
    EXPECT_EQ(view.itemAtRow(0), nullptr);
    view.reloadData();
    EXPECT_EQ(view.selectedRow(), OutlineView::noRow);
}

TEST_F(OutlineViewTest, ItemsLiveUntilTheReload)
{
    std::weak_ptr<FakeTree::Node> watched = src;
    src.reset();
    tree.root->children.pop_back();
    EXPECT_FALSE(watched.expired());
    view.viewport()->grab();
    view.reloadData();
    EXPECT_TRUE(watched.expired());
}

// No model tester here: it would ask for the whole tree.
TEST(LazyOutlineViewTest, CollapsedFoldersAreNotAskedFor)
{
    FakeTree tree;
    for (int i = 0; i < 100; ++i) {
        const NodePtr folder = tree.root->add(QString::number(i));
        for (int j = 0; j < 1000; ++j)
            folder->add(QString::number(j));
    }
    OutlineView view;
    view.setDataSource(&tree);
    view.resize(300, 300);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.grab();
    EXPECT_EQ(tree.childrenAskedFor, 100);
    view.expandItem(tree.root->children[0]);
    view.grab();
    EXPECT_EQ(tree.childrenAskedFor, 1100);
    view.setDataSource(nullptr);
}

TEST(LazyOutlineViewTest, ATreeAsDeepAsStoredOnesCanBe)
{
    // A stored tree has at most 8,192 levels, of which each item takes two.
    constexpr int levels = 4096;
    FakeTree tree;
    NodePtr node = tree.root;
    for (int depth = 0; depth < levels; ++depth)
        node = node->add(QStringLiteral("d"));
    OutlineView view;
    view.setDataSource(&tree);
    view.expandItem(tree.root->children[0], true);
    EXPECT_EQ(view.numberOfRows(), levels);
    EXPECT_EQ(view.rowForItem(node), levels - 1);
    view.setDataSource(nullptr);
}

TEST(LazyOutlineViewTest, AHundredThousandRowsAskForTheirTextsOnlyWhereVisible)
{
    FakeTree tree;
    for (int i = 0; i < 1000; ++i) {
        const NodePtr folder = tree.root->add(QString::number(i));
        for (int j = 0; j < 99; ++j)
            folder->add(QString::number(j));
    }
    OutlineView view;
    view.setDataSource(&tree);
    view.resize(300, 300);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    for (const NodePtr &folder : tree.root->children)
        view.expandItem(folder, true);
    view.grab();
    EXPECT_EQ(view.numberOfRows(), 100'000);
    EXPECT_LT(tree.valuesAskedFor, 1000);
    view.setDataSource(nullptr);
}

} // namespace
