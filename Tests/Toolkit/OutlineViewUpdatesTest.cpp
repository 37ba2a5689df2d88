// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "OutlineViewFixture.h"

#include <QSignalSpy>
#include <array>

namespace {

using NodePtr = FakeTree::NodePtr;
using OutlineViewUpdatesTest = OutlineViewFixture;

/// What the model told the view, in the order of rows inserted, rows removed, data changed and resets.
class ModelSignals
{
public:
    explicit ModelSignals(const QAbstractItemModel &model)
        : inserted(&model, &QAbstractItemModel::rowsInserted)
        , removed(&model, &QAbstractItemModel::rowsRemoved)
        , changed(&model, &QAbstractItemModel::dataChanged)
        , reset(&model, &QAbstractItemModel::modelReset)
    {
    }

    std::array<int, 4> counts() const
    {
        return {int(inserted.count()), int(removed.count()), int(changed.count()), int(reset.count())};
    }

    QSignalSpy inserted;
    QSignalSpy removed;
    QSignalSpy changed;
    QSignalSpy reset;
};

using Counts = std::array<int, 4>;

TEST_F(OutlineViewUpdatesTest, AnInsertedItemIsOneInsertedRow)
{
    view.expandItem(nullptr, true);
    const ModelSignals signalsSeen(*view.model());
    src->children.insert(src->children.begin() + 1, std::make_shared<FakeTree::Node>());
    src->children[1]->name = QStringLiteral("new");
    view.insertItemAtIndex(1, src);
    EXPECT_EQ(rows(), u"docs a b deep empty src x new y");
    EXPECT_EQ(signalsSeen.counts(), (Counts{1, 0, 0, 0}));
    EXPECT_EQ(signalsSeen.inserted.at(0).at(1).toInt(), 1);
    tree.root->children.insert(tree.root->children.begin(), std::make_shared<FakeTree::Node>());
    view.insertItemAtIndex(0, nullptr);
    EXPECT_EQ(rows(), u" docs a b deep empty src x new y");
}

TEST_F(OutlineViewUpdatesTest, ARemovedItemIsOneRemovedRow)
{
    view.expandItem(nullptr, true);
    const ModelSignals signalsSeen(*view.model());
    docs->children.erase(docs->children.begin() + 1);
    view.removeItemAtIndex(1, docs);
    EXPECT_EQ(rows(), u"docs a empty src x y");
    EXPECT_EQ(signalsSeen.counts(), (Counts{0, 1, 0, 0}));
    tree.root->children.pop_back();
    view.removeItemAtIndex(2, nullptr);
    EXPECT_EQ(rows(), u"docs a empty");
}

TEST_F(OutlineViewUpdatesTest, AChangedItemIsOneChangedRow)
{
    const ModelSignals signalsSeen(*view.model());
    src->name = QStringLiteral("source");
    view.reloadItem(src, false);
    EXPECT_EQ(signalsSeen.counts(), (Counts{0, 0, 1, 0}));
    EXPECT_EQ(signalsSeen.changed.at(0).at(0).toModelIndex().row(), 2);
    tree.isEditable = true;
    EXPECT_TRUE(view.model()->setData(view.model()->index(2, 0), QStringLiteral("typed"), Qt::EditRole));
    EXPECT_EQ(signalsSeen.counts(), (Counts{0, 0, 2, 0}));
    EXPECT_EQ(rows(), u"docs empty typed");
}

TEST_F(OutlineViewUpdatesTest, ManyChangedItemsAreSoManyChangedRows)
{
    view.expandItem(nullptr, true);
    const ModelSignals signalsSeen(*view.model());
    view.reloadItems({docs, src, src->children[1], std::make_shared<FakeTree::Node>()});
    EXPECT_EQ(signalsSeen.counts(), (Counts{0, 0, 3, 0}));
    EXPECT_EQ(rows(), u"docs a b deep empty src x y");
}

TEST_F(OutlineViewUpdatesTest, TheDisclosureTriangleComesWithTheFirstChildAndGoesWithTheLast)
{
    const QModelIndex index = view.model()->index(1, 0);
    const ModelSignals signalsSeen(*view.model());
    empty->add(QStringLiteral("first"));
    view.insertItemAtIndex(0, empty);
    EXPECT_TRUE(view.model()->hasChildren(index));
    EXPECT_FALSE(view.model()->flags(index) & Qt::ItemNeverHasChildren);
    EXPECT_EQ(signalsSeen.changed.count(), 1) << "the row is to be painted anew";
    view.expandItem(empty);
    EXPECT_EQ(rows(), u"docs empty first src");
    empty->children.clear();
    view.removeItemAtIndex(0, empty);
    EXPECT_FALSE(view.model()->hasChildren(index));
    EXPECT_TRUE(view.model()->flags(index) & Qt::ItemNeverHasChildren);
    EXPECT_EQ(signalsSeen.changed.count(), 2);
    EXPECT_EQ(rows(), u"docs empty src");
}

TEST_F(OutlineViewUpdatesTest, AnExpandedItemThatLostItsLastChildShowsTheNextOne)
{
    view.expandItem(nullptr, true);
    const NodePtr b = docs->children[1];
    const NodePtr deep = b->children[0];
    b->children.clear();
    view.removeItemAtIndex(0, b);
    EXPECT_EQ(rows(), u"docs a b empty src x y");
    b->children.push_back(deep);
    view.insertItemAtIndex(0, b);
    EXPECT_EQ(rows(), u"docs a b deep empty src x y");
}

TEST_F(OutlineViewUpdatesTest, UpdatesThatAreToldWronglyAreMadeOutAllTheSame)
{
    view.expandItem(nullptr, true);
    src->add(QStringLiteral("z"));
    view.insertItemAtIndex(0, src);
    EXPECT_EQ(rows(), u"docs a b deep empty src x y z");
    src->children.erase(src->children.begin());
    view.removeItemAtIndex(2, src);
    EXPECT_EQ(rows(), u"docs a b deep empty src y z");
    src->children.clear();
    src->add(QStringLiteral("other"));
    view.removeItemAtIndex(-1, src);
    EXPECT_EQ(rows(), u"docs a b deep empty src other");
    view.insertItemAtIndex(7, src);
    EXPECT_EQ(rows(), u"docs a b deep empty src other");
    view.insertItemAtIndex(0, std::make_shared<FakeTree::Node>());
    view.removeItemAtIndex(0, std::make_shared<FakeTree::Node>());
    EXPECT_EQ(rows(), u"docs a b deep empty src other");
}

TEST_F(OutlineViewUpdatesTest, UpdatesKeepSelectionByRow)
{
    view.selectRow(1);
    tree.selectionChanges = 0;
    tree.root->children.erase(tree.root->children.begin() + 1);
    view.removeItemAtIndex(1, nullptr);
    EXPECT_EQ(view.selectedRow(), 1);
    EXPECT_EQ(nameAtRow(1), u"src");
    EXPECT_EQ(tree.selectionChanges, 1) << "another item is selected now";
    src->add(QStringLiteral("below"));
    view.insertItemAtIndex(2, src);
    EXPECT_EQ(tree.selectionChanges, 1) << "the same item is selected still";
}

TEST_F(OutlineViewUpdatesTest, UpdatesInOneKeepSelectionOnceAndExpansionByItem)
{
    view.expandItem(nullptr, true);
    view.selectRow(2);
    ASSERT_EQ(nameAtRow(2), u"b");
    tree.selectionChanges = 0;
    const NodePtr b = docs->children[1];
    view.beginUpdates();
    tree.root->children.insert(tree.root->children.begin(), b);
    view.insertItemAtIndex(0, nullptr);
    docs->children.pop_back();
    view.removeItemAtIndex(1, docs);
    EXPECT_EQ(tree.selectionChanges, 0);
    view.endUpdates();
    EXPECT_EQ(rows(), u"b deep docs a empty src x y");
    EXPECT_EQ(nameAtRow(view.selectedRow()), u"docs");
    EXPECT_EQ(tree.selectionChanges, 1);
}

/// Counts how often all rows are laid out.
TEST_F(OutlineViewUpdatesTest, ExpansionComesBackWithAnItemAndGoesToItsCopy)
{
    view.expandItem(nullptr, true);
    view.collapseItem(docs);
    EXPECT_TRUE(view.expansionOf(empty).empty());
    const OutlineView::Expansion expansion = view.expansionOf(docs);
    EXPECT_FALSE(expansion.empty()) << "the folder inside is expanded";

    tree.root->children.erase(tree.root->children.begin());
    view.removeItemAtIndex(0, nullptr);
    tree.root->children.insert(tree.root->children.begin(), docs);
    view.insertItemAtIndex(0, nullptr);
    view.setExpansionOf(docs, nullptr, expansion);
    EXPECT_EQ(rows(), u"docs empty src x y") << "as it was collapsed";
    view.expandItem(docs);
    EXPECT_EQ(rows(), u"docs a b deep empty src x y") << "as it was inside";

    // The copy comes into a folder whose children nobody has asked for.
    const NodePtr copy = empty->add(QStringLiteral("docs"));
    copy->add(QStringLiteral("a"));
    copy->add(QStringLiteral("b"))->add(QStringLiteral("deep"));
    view.insertItemAtIndex(0, empty);
    view.setExpansionOf(copy, empty, view.expansionOf(docs));
    view.expandItem(empty);
    EXPECT_EQ(rows(), u"docs a b deep empty docs a b deep src x y");
}

TEST_F(OutlineViewUpdatesTest, TheExpansionOfAnotherTreeDoesNoHarm)
{
    view.expandItem(nullptr, true);
    const OutlineView::Expansion expansion = view.expansionOf(docs);
    view.collapseItem(docs);
    view.collapseItem(src);
    view.setExpansionOf(src, nullptr, expansion);
    view.setExpansionOf(docs, nullptr, view.expansionOf(src));
    view.setExpansionOf(std::make_shared<FakeTree::Node>(), nullptr, expansion);
    view.setExpansionOf(docs, nullptr, OutlineView::Expansion(1000, true));
    EXPECT_EQ(rows(), u"docs a b deep empty src x y");
    EXPECT_TRUE(view.expansionOf(std::make_shared<FakeTree::Node>()).empty());
}

class CountingOutlineView final : public OutlineView
{
public:
    void doItemsLayout() override
    {
        ++layouts;
        OutlineView::doItemsLayout();
    }

    int layouts = 0;
};

// No model tester in these: it would ask for the whole tree.
TEST(LazyOutlineViewUpdatesTest, AnEditAmongAHundredThousandAsksForNoOtherChildAndIsLaidOutOnce)
{
    FakeTree tree;
    for (int i = 0; i < 100'000; ++i)
        tree.root->add(QString::number(i));
    CountingOutlineView view;
    view.setDataSource(&tree);
    view.resize(300, 300);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.selectRow(50'000);
    view.grab();
    const auto begin = [&] { tree.childrenAskedFor = view.layouts = 0; };
    const auto expectOneLayout = [&](const char *edit) {
        view.grab();
        EXPECT_LT(tree.childrenAskedFor, 10) << edit;
        EXPECT_EQ(view.layouts, 1) << edit;
    };

    auto &children = tree.root->children;
    begin();
    children.insert(children.begin() + 50'000, std::make_shared<FakeTree::Node>());
    view.insertItemAtIndex(50'000, nullptr);
    expectOneLayout("insertion");
    EXPECT_EQ(view.rowForItem(children[50'001]), 50'001);

    begin();
    children.erase(children.begin() + 50'000);
    view.removeItemAtIndex(50'000, nullptr);
    expectOneLayout("removal");

    // A move, as it is made: a copy comes in, then the item itself goes.
    begin();
    view.beginUpdates();
    children.insert(children.begin(), std::make_shared<FakeTree::Node>());
    view.insertItemAtIndex(0, nullptr);
    children.erase(children.begin() + 50'000);
    view.removeItemAtIndex(50'000, nullptr);
    view.endUpdates();
    expectOneLayout("move");
    EXPECT_EQ(view.numberOfRows(), 100'000);
    EXPECT_EQ(view.rowForItem(children[99'999]), 99'999);

    begin();
    view.reloadItem(children[50'000], false);
    view.reloadData();
    view.grab();
    EXPECT_EQ(view.layouts, 0) << "nothing came or went";
    view.setDataSource(nullptr);
}

TEST(LazyOutlineViewUpdatesTest, ACollapsedFolderIsNotAskedForWhenItGetsAChild)
{
    FakeTree tree;
    const NodePtr folder = tree.root->add(QStringLiteral("folder"));
    OutlineView view;
    view.setDataSource(&tree);
    view.grab();
    const ModelSignals signalsSeen(*view.model());
    tree.childrenAskedFor = 0;
    folder->add(QStringLiteral("first"));
    view.insertItemAtIndex(0, folder);
    folder->add(QStringLiteral("second"));
    view.insertItemAtIndex(1, folder);
    EXPECT_EQ(signalsSeen.counts(), (Counts{0, 0, 1, 0})) << "just the triangle";
    EXPECT_EQ(tree.childrenAskedFor, 0);
    view.expandItem(folder);
    EXPECT_EQ(view.numberOfRows(), 3);
    view.setDataSource(nullptr);
}

} // namespace
