// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineView.h"

#include "FakeTree.h"
#include "SentDrag.h"

#include <QAbstractItemModelTester>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString itemType = QStringLiteral("ItemType");

/// Allows every drop but those on "c", and notes what it is asked.
class DroppingTree final : public FakeTree
{
public:
    using Place = std::pair<QString, int>;

    DragOperations outlineViewValidateDrop(OutlineView &, const DraggingInfo &, const OutlineItem &item,
                                           int childIndex) override
    {
        asked.append({name(item), childIndex});
        return name(item) == u"c" ? DragOperation::None : DragOperation::Every;
    }
    bool outlineViewAcceptDrop(OutlineView &, const DraggingInfo &, const OutlineItem &item,
                               int childIndex) override
    {
        dropped.append({name(item), childIndex});
        return accepts;
    }
    bool outlineViewWriteItemsToPasteboard(OutlineView &, const QList<OutlineItem> &items,
                                           Pasteboard &) override
    {
        for (const OutlineItem &item : items)
            written.append(name(item));
        return false;
    }

    QList<Place> asked;
    QList<Place> dropped;
    QStringList written;
    bool accepts = true;

private:
    static QString name(const OutlineItem &item)
    {
        return item ? static_cast<const Node *>(item.get())->name : QString();
    }
};

/// a ( b ( d ) ), c
class OutlineViewDraggingTest : public ::testing::Test
{
protected:
    OutlineViewDraggingTest()
    {
        a = tree.root->add(QStringLiteral("a"));
        b = a->add(QStringLiteral("b"));
        d = b->add(QStringLiteral("d"));
        c = tree.root->add(QStringLiteral("c"));
        view.setDataSource(&tree);
        view.expandItem({}, true);
        view.registerForDraggedTypes({itemType});
        view.resize(300, 300);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
        drag.data.setData(itemType, "x");
    }
    ~OutlineViewDraggingTest() override { view.setDataSource(nullptr); }

    QRect row(const FakeTree::NodePtr &node) const
    {
        return view.visualRect(view.indexAt({150, view.rowForItem(node) * rowHeight() + rowHeight() / 2}));
    }
    int rowHeight() const { return view.visualRect(view.model()->index(0, 0)).height(); }
    QPoint on(const FakeTree::NodePtr &node) const { return row(node).center(); }
    QPoint above(const FakeTree::NodePtr &node) const { return {150, row(node).top() + 1}; }
    /// Indented as the children of the item at \a level are; the top level is 0.
    QPoint below(const FakeTree::NodePtr &node, int level) const
    {
        const int indented = (level + 1) * view.indentation() + view.indentation() / 2;
        const bool mirrored = view.layoutDirection() == Qt::RightToLeft;
        return {mirrored ? view.viewport()->width() - 1 - indented : indented, row(node).bottom() - 1};
    }
    DroppingTree::Place askedAt(const QPoint &point)
    {
        tree.asked.clear();
        drag.move(point);
        EXPECT_EQ(tree.asked.size(), 1);
        return tree.asked.value(0);
    }
    QImage picture() { return view.viewport()->grab().toImage(); }
    static DroppingTree::Place place(const QString &name, int index) { return {name, index}; }

    DroppingTree tree;
    FakeTree::NodePtr a, b, c, d;
    OutlineView view;
    SentDrag drag{view};
    QAbstractItemModelTester tester{view.model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(OutlineViewDraggingTest, TellsItemsAndPlacesAmongTheirChildren)
{
    const int onItself = OutlineViewDataSource::dropOnItem;
    EXPECT_TRUE(drag.enter());
    EXPECT_EQ(askedAt(on(a)), place(QStringLiteral("a"), onItself));
    EXPECT_EQ(askedAt(on(d)), place(QStringLiteral("d"), onItself));
    EXPECT_EQ(askedAt(above(a)), place({}, 0));
    EXPECT_EQ(askedAt(above(b)), place(QStringLiteral("a"), 0));
    EXPECT_EQ(askedAt(below(a, 0)), place(QStringLiteral("a"), 0));
    EXPECT_EQ(askedAt(above(c)), place({}, 1));
    EXPECT_EQ(askedAt(below(c, 0)), place({}, 2));
    EXPECT_EQ(askedAt({150, 290}), place({}, 2));
}

TEST_F(OutlineViewDraggingTest, BelowALastChildTheIndentationTellsTheFolder)
{
    EXPECT_EQ(askedAt(below(d, 2)), place(QStringLiteral("b"), 1));
    EXPECT_EQ(askedAt(below(d, 3)), place(QStringLiteral("b"), 1));
    EXPECT_EQ(askedAt(below(d, 1)), place(QStringLiteral("a"), 1));
    EXPECT_EQ(askedAt(below(d, 0)), place({}, 1));
    EXPECT_EQ(askedAt(below(d, -1)), place({}, 1));
    // An item before the last does not end its folder.
    a->add(QStringLiteral("e"));
    view.reloadData();
    EXPECT_EQ(askedAt(below(d, 0)), place(QStringLiteral("a"), 1));
}

TEST_F(OutlineViewDraggingTest, RightToLeftTheIndentationIsMirrored)
{
    view.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(askedAt(below(d, 2)), place(QStringLiteral("b"), 1));
    EXPECT_EQ(askedAt(below(d, 1)), place(QStringLiteral("a"), 1));
    EXPECT_EQ(askedAt(below(d, 0)), place({}, 1));
}

TEST_F(OutlineViewDraggingTest, AnOutlineWithoutRowsTakesADropAsAWhole)
{
    tree.root->children.clear();
    view.reloadData();
    EXPECT_EQ(askedAt({20, 20}), place({}, OutlineViewDataSource::dropOnItem));
}

TEST_F(OutlineViewDraggingTest, ShowsLevelAndPlaceOfAnAllowedDropAndNothingOfARefusedOne)
{
    const QImage without = picture();
    QList<QImage> shown;
    for (const QPoint &point : {on(a), on(b), below(d, 2), below(d, 1), below(d, 0), below(c, 0)}) {
        EXPECT_NE(drag.move(point), Qt::IgnoreAction);
        EXPECT_NE(picture(), without);
        EXPECT_FALSE(shown.contains(picture()));
        shown.append(picture());
    }
    EXPECT_EQ(drag.move(on(c)), Qt::IgnoreAction);
    EXPECT_EQ(picture(), without);
    drag.move(on(a));
    drag.leave();
    EXPECT_EQ(picture(), without);
    drag.move(on(a));
    drag.drop(on(a));
    EXPECT_EQ(picture(), without);
}

TEST_F(OutlineViewDraggingTest, ADropReachesTheDataSourceAndTheViewChangesNoRows)
{
    QSignalSpy inserted(view.model(), &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(view.model(), &QAbstractItemModel::rowsRemoved);
    EXPECT_NE(drag.drop(on(a)), Qt::IgnoreAction);
    EXPECT_THAT(tree.dropped, ElementsAre(place(QStringLiteral("a"), OutlineViewDataSource::dropOnItem)));
    EXPECT_EQ(drag.drop(on(c)), Qt::IgnoreAction);
    EXPECT_EQ(tree.dropped.size(), 1);
    tree.accepts = false;
    EXPECT_EQ(drag.drop(on(b)), Qt::IgnoreAction);
    EXPECT_EQ(tree.dropped.size(), 2);
    EXPECT_EQ(inserted.count() + removed.count(), 0);
}

TEST_F(OutlineViewDraggingTest, OtherTypesAreRefusedWithoutAskingAnybody)
{
    drag.data.clear();
    drag.data.setData(QStringLiteral("OtherType"), QByteArray(1 << 20, '\xff'));
    drag.data.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a"))});
    EXPECT_FALSE(drag.enter());
    EXPECT_EQ(drag.move(on(a)), Qt::IgnoreAction);
    EXPECT_EQ(drag.drop(on(a)), Qt::IgnoreAction);
    EXPECT_THAT(tree.asked, IsEmpty());
}

TEST_F(OutlineViewDraggingTest, ADataSourceThatGoesLeavesNothingToDropOn)
{
    drag.move(on(a));
    view.setDataSource(nullptr);
    EXPECT_EQ(drag.move({50, 10}), Qt::IgnoreAction);
    EXPECT_EQ(drag.drop({50, 10}), Qt::IgnoreAction);
}

TEST_F(OutlineViewDraggingTest, AFolderOpensWhenTheDragStaysOnIt)
{
    view.collapseItem(b);
    drag.enter();
    drag.move(on(b));
    EXPECT_FALSE(view.isItemExpanded(b));
    EXPECT_TRUE(QTest::qWaitFor([this] { return view.isItemExpanded(b); }));
    // And stays open.
    drag.move(on(b));
    drag.drop(on(c));
    EXPECT_TRUE(view.isItemExpanded(b));
}

TEST_F(OutlineViewDraggingTest, AFolderThatTheDragHasLeftStaysClosed)
{
    const FakeTree::NodePtr other = tree.root->add(QStringLiteral("other"));
    other->add(QStringLiteral("child"));
    view.reloadData();
    view.collapseItem(a);
    drag.move(on(a));
    drag.move(on(other));
    // Where the drag went later opens, after as long a time.
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.isItemExpanded(other); }));
    EXPECT_FALSE(view.isItemExpanded(a));
}

TEST_F(OutlineViewDraggingTest, TheViewScrollsWhileTheDragIsNearItsEdge)
{
    for (int number = 0; number < 100; ++number)
        tree.root->add(QString::number(number));
    view.reloadData();
    drag.enter();
    const QPoint nearTheEnd(150, view.viewport()->height() - 2);
    QCursor::setPos(view.viewport()->mapToGlobal(nearTheEnd));
    drag.move(nearTheEnd);
    EXPECT_TRUE(QTest::qWaitFor([this] { return view.verticalScrollBar()->value() > 0; }));
    drag.leave();
}

TEST_F(OutlineViewDraggingTest, DraggingAnItemAsksForItsDataAndLeavesTheSelectionAlone)
{
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, on(b));
    const int distance = QApplication::startDragDistance();
    for (const int step : {1, 2})
        QTest::mouseMove(view.viewport(), on(b) + QPoint(0, step * distance));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, on(c));
    EXPECT_THAT(tree.written, ElementsAre(QStringLiteral("b")));
    EXPECT_EQ(view.selectedRow(), view.rowForItem(b));
}

} // namespace
