// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "OutlineViewFixture.h"
#include "PaintedRegion.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

namespace {

using NodePtr = FakeTree::NodePtr;

/// Rows that reach beyond the edge of the view.
class OutlineViewScrolling : public OutlineViewFixture
{
protected:
    /// A chain of folders called 1 to \a depth, all expanded.
    NodePtr addChain(int depth)
    {
        NodePtr node = tree.root->add(QStringLiteral("1"));
        chain = {node};
        for (int level = 2; level <= depth; ++level)
            chain.push_back(node = node->add(QString::number(level)));
        view.reloadData();
        view.expandItem(chain.front(), true);
        paint();
        return node;
    }
    void paint()
    {
        view.repaint();
        QCoreApplication::processEvents();
    }
    QScrollBar &bar() const { return *view.horizontalScrollBar(); }
    QRect placeOf(const NodePtr &node) const
    {
        QModelIndex index = view.model()->index(0, 0);
        for (int row = view.rowForItem(node); row > 0; --row)
            index = view.indexBelow(index);
        return view.visualRect(index);
    }
    /// Where the row's text begins; from the right where texts run from right to left.
    int startOf(const NodePtr &node) const
    {
        const QRect place = placeOf(node);
        return view.isRightToLeft() ? view.viewport()->width() - 1 - place.right() : place.left();
    }
    QString toolTipOf(const NodePtr &node) const
    {
        QToolTip::hideText();
        const QRect place = placeOf(node) & view.viewport()->rect();
        QHelpEvent event(QEvent::ToolTip, place.center(), view.viewport()->mapToGlobal(place.center()));
        QApplication::sendEvent(view.viewport(), &event);
        return QToolTip::text();
    }
    QLineEdit *editor() const { return view.viewport()->findChild<QLineEdit *>(); }

    static constexpr int deep = 40;
    std::vector<NodePtr> chain;
};

TEST_F(OutlineViewScrolling, RowsThatFitAreNotScrolled)
{
    addChain(3);
    EXPECT_EQ(bar().maximum(), 0);
    EXPECT_EQ(view.columnWidth(0), view.viewport()->width());
    view.resize(500, 300);
    EXPECT_EQ(view.columnWidth(0), view.viewport()->width());
    view.resize(250, 300);
    EXPECT_EQ(view.columnWidth(0), view.viewport()->width());
    EXPECT_EQ(bar().maximum(), 0);
}

TEST_F(OutlineViewScrolling, ATextThatReachesBeyondTheEdgeIsTheToolTip)
{
    const QString longName = QStringLiteral("far wider than the view ").repeated(10);
    view.setToolTip(QStringLiteral("of the view"));
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        view.setLayoutDirection(direction);
        const NodePtr wide = tree.root->add(longName);
        const NodePtr narrow = tree.root->add(QStringLiteral("n"));
        view.reloadData();
        paint();
        ASSERT_GT(bar().maximum(), 0);
        bar().setValue(0);
        EXPECT_EQ(toolTipOf(wide), QStringLiteral("<span>%1</span>").arg(longName));
        EXPECT_EQ(toolTipOf(narrow), u"of the view");
        bar().setValue(bar().maximum());
        EXPECT_EQ(toolTipOf(wide), QStringLiteral("<span>%1</span>").arg(longName));
        EXPECT_EQ(toolTipOf(narrow), u"<span>n</span>") << "it is out of sight";
    }
    QToolTip::hideText();
}

TEST_F(OutlineViewScrolling, OfATextThatNoScreenIsWideEnoughForTheStartIsShown)
{
    const QString face = QString::fromUtf8("\xf0\x9f\x98\x80");
    const NodePtr endless = tree.root->add(u'x' + face.repeated(350'000));
    view.reloadData();
    paint();
    const QString shown = u'x' + face.repeated(999) + u'…';
    EXPECT_EQ(toolTipOf(endless), QStringLiteral("<span>%1</span>").arg(shown));
    EXPECT_LT(bar().maximum(), view.fontMetrics().horizontalAdvance(shown) + view.width());
    tree.isEditable = true;
    view.editRow(view.rowForItem(endless));
    ASSERT_TRUE(editor());
    EXPECT_EQ(editor()->text(), endless->name) << "it is whole where it is edited";
    QToolTip::hideText();
}

TEST_F(OutlineViewScrolling, AWholeRowIsPaintedWhenItGetsSelected)
{
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        view.setLayoutDirection(direction);
        addChain(5);
        view.selectRow(0);
        paint();
        PaintedRegion painted(*view.viewport());
        view.selectRow(view.rowForItem(chain.back()));
        QRect row = placeOf(chain.back());
        ASSERT_LT(row.width(), view.viewport()->width());
        row.setLeft(0);
        row.setRight(view.viewport()->width() - 1);
        EXPECT_TRUE(QTest::qWaitFor([&] { return (QRegion(row) - painted.region).isEmpty(); })) << direction;
    }
}

TEST_F(OutlineViewScrolling, ADeepRowIsReachedByKeyAndSeen)
{
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        view.setLayoutDirection(direction);
        const NodePtr deepest = addChain(deep);
        QTest::keyClick(&view, Qt::Key_End);
        EXPECT_EQ(nameAtRow(view.selectedRow()), QString::number(deep));
        EXPECT_GT(bar().value(), 0);
        EXPECT_GE(startOf(deepest), view.indentation());
        EXPECT_LT(startOf(deepest) + view.fontMetrics().horizontalAdvance(QString::number(deep)),
                  view.viewport()->width());
        const int there = bar().value();
        QTest::keyClick(&view, Qt::Key_Up);
        EXPECT_EQ(bar().value(), there) << "what is seen already stays where it is";
        QTest::keyClick(&view, Qt::Key_Home);
        EXPECT_EQ(bar().value(), 0);
        view.selectRow(OutlineView::noRow);
        tree.root->children.pop_back();
        view.reloadData();
    }
}

TEST_F(OutlineViewScrolling, ADeepRowThatIsSeenCanBeScrolledTo)
{
    addChain(deep);
    EXPECT_EQ(bar().maximum(), 0) << "the rows on screen fit";
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    paint();
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar().maximum() > 0; }));
    bar().setValue(bar().maximum());
    const QRect place = placeOf(chain.back());
    EXPECT_GE(place.left(), 0);
    EXPECT_GE(place.width(), view.fontMetrics().horizontalAdvance(QString::number(deep)));
}

TEST_F(OutlineViewScrolling, ALongNameIsScrolledToAndNotCutOff)
{
    const NodePtr node = tree.root->add(QString(100, u'W'));
    view.reloadData();
    paint();
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar().maximum() > 0; }));
    EXPECT_GE(placeOf(node).width(), view.fontMetrics().horizontalAdvance(node->name));
    view.selectRow(3);
    EXPECT_EQ(bar().value(), 0) << "its beginning is what counts";
}

TEST_F(OutlineViewScrolling, AClickDoesNotScroll)
{
    addChain(deep);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    paint();
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar().maximum() > 0; }));
    bar().setValue(bar().maximum() / 2);
    const int there = bar().value();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, QPoint(150, 150));
    EXPECT_GT(view.selectedRow(), 0);
    EXPECT_EQ(bar().value(), there);
}

TEST_F(OutlineViewScrolling, WhatNeedsNoScrollingAnyMoreIsNotScrolled)
{
    const NodePtr deepest = addChain(deep);
    view.selectRow(view.rowForItem(deepest));
    ASSERT_GT(bar().maximum(), 0);
    view.selectRow(0);
    view.collapseItem(chain.front());
    EXPECT_TRUE(QTest::qWaitFor([this] { return bar().maximum() == 0; }));

    view.expandItem(chain.front(), true);
    view.selectRow(view.rowForItem(deepest));
    ASSERT_GT(bar().maximum(), 0);
    view.selectRow(0);
    tree.root->children.pop_back();
    view.removeItemAtIndex(3, nullptr);
    EXPECT_TRUE(QTest::qWaitFor([this] { return bar().maximum() == 0; }));

    addChain(deep);
    QTest::keyClick(&view, Qt::Key_End);
    ASSERT_GT(bar().value(), 0);
    tree.root = std::make_shared<FakeTree::Node>();
    tree.root->add(QStringLiteral("another"));
    view.reloadData();
    EXPECT_TRUE(QTest::qWaitFor([this] { return bar().maximum() == 0; }));
}

TEST_F(OutlineViewScrolling, RemovingARowLeavesTheOthersWhereTheyAre)
{
    const NodePtr deepest = addChain(deep);
    deepest->add(QStringLiteral("leaf"));
    view.reloadItem(deepest, true);
    view.expandItem(deepest);
    view.selectRow(view.rowForItem(deepest->children.front()));
    const int there = bar().value();
    deepest->children.clear();
    view.removeItemAtIndex(0, deepest);
    paint();
    EXPECT_EQ(bar().value(), there);
}

TEST_F(OutlineViewScrolling, TheEditorOfAShortRowEndsWhereTheViewEnds)
{
    tree.isEditable = true;
    tree.root->add(QString(100, u'W'));
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        view.setLayoutDirection(direction);
        view.reloadData();
        paint();
        ASSERT_TRUE(QTest::qWaitFor([this] { return bar().maximum() > 0; }));
        view.selectRow(0);
        view.editRow(0);
        ASSERT_TRUE(editor());
        EXPECT_TRUE(view.viewport()->rect().contains(editor()->geometry()));
        QTest::keyClick(editor(), Qt::Key_Escape);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
    }
}

TEST_F(OutlineViewScrolling, TheEditorOfADeepRowHasRoomAndIsSeen)
{
    tree.isEditable = true;
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        view.setLayoutDirection(direction);
        const NodePtr deepest = addChain(deep);
        view.selectRow(view.rowForItem(deepest));
        view.editRow(view.selectedRow());
        ASSERT_TRUE(editor());
        EXPECT_TRUE(view.viewport()->rect().contains(editor()->geometry()));
        EXPECT_GE(editor()->width(), 15 * view.fontMetrics().averageCharWidth());
        QTest::keyClicks(editor(), QString(100, u'm'));
        EXPECT_TRUE(view.viewport()->rect().contains(editor()->geometry())) << "as long as its text is";
        QTest::keyClick(editor(), Qt::Key_Escape);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !editor(); }));
        tree.root->children.pop_back();
        view.reloadData();
    }
}

} // namespace
