// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TableView.h"

#include "FakeRecord.h"
#include "SentDrag.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/DragData.h"
#include "Toolkit/PromisedFile.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString rowType = QStringLiteral("RowType");

/// Allows drops between rows, and notes what it is asked.
class DroppingDelegate final : public TableViewDelegate
{
public:
    DragOperations tableViewValidateDrop(TableView &, const DraggingInfo &info, int proposedRow,
                                         TableDropOperation operation) override
    {
        asked.append({proposedRow, operation});
        mask = info.draggingSourceOperationMask();
        return operation == TableDropOperation::Above ? allowed : DragOperation::None;
    }
    bool tableViewAcceptDrop(TableView &, const DraggingInfo &info, int row,
                             TableDropOperation operation) override
    {
        dropped.append({row, operation});
        paths = info.draggingPasteboard().propertyListForType(PasteboardType::filenames).toStringList();
        return accepts;
    }
    bool tableViewWriteRowsWithIndexesToPasteboard(TableView &, const QList<int> &rows, Pasteboard &) override
    {
        written = rows;
        return false;
    }

    using Place = std::pair<int, TableDropOperation>;
    DragOperations allowed = DragOperation::Move;
    bool accepts = true;
    QList<Place> asked;
    QList<Place> dropped;
    DragOperations mask;
    QStringList paths;
    QList<int> written;
};

class TableViewDraggingTest : public ::testing::Test
{
protected:
    TableViewDraggingTest()
    {
        controller.setContent({FakeRecord::labelled(QStringLiteral("alpha")),
                               FakeRecord::labelled(QStringLiteral("beta")),
                               FakeRecord::labelled(QStringLiteral("gamma"))});
        view.setColumns({{.identifier = labelKey, .key = labelKey, .isEditable = true}});
        view.setDelegate(&delegate);
        view.setController(&controller);
        view.registerForDraggedTypes({PasteboardType::filenames, rowType});
        view.resize(200, 200);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
        drag.data.setData(rowType, "0");
        reset.clear();
    }
    ~TableViewDraggingTest() override
    {
        EXPECT_EQ(inserted.count() + removed.count() + moved.count() + reset.count(), 0);
        view.setDelegate(nullptr);
    }

    QRect row(int number) const { return view.visualRect(view.model()->index(number, 0)); }
    QPoint on(int number) const { return row(number).center(); }
    QPoint above(int number) const { return {100, row(number).top() + 1}; }
    QPoint below(int number) const { return {100, row(number).bottom() - 1}; }
    QImage picture() { return view.viewport()->grab().toImage(); }

    static DroppingDelegate::Place placeAbove(int number) { return {number, TableDropOperation::Above}; }
    static DroppingDelegate::Place placeOn(int number) { return {number, TableDropOperation::On}; }

    DroppingDelegate delegate;
    ArrayController controller;
    TableView view;
    SentDrag drag{view};
    QAbstractItemModelTester tester{view.model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
    QSignalSpy inserted{view.model(), &QAbstractItemModel::rowsInserted};
    QSignalSpy removed{view.model(), &QAbstractItemModel::rowsRemoved};
    QSignalSpy moved{view.model(), &QAbstractItemModel::rowsMoved};
    QSignalSpy reset{view.model(), &QAbstractItemModel::modelReset};
};

TEST_F(TableViewDraggingTest, TellsPlacesBetweenRowsAndOnRows)
{
    EXPECT_TRUE(drag.enter());
    for (const QPoint &point : {above(0), on(0), below(0), above(1), on(2), below(2), QPoint(100, 190)})
        drag.move(point);
    EXPECT_THAT(delegate.asked, ElementsAre(placeAbove(0), placeOn(0), placeAbove(1), placeAbove(1),
                                            placeOn(2), placeAbove(3), placeAbove(3)));
}

TEST_F(TableViewDraggingTest, AnEmptyTableTakesADropAtItsBeginning)
{
    TableView empty;
    ArrayController none;
    empty.setColumns(view.columns());
    empty.setController(&none);
    empty.setDelegate(&delegate);
    empty.registerForDraggedTypes({rowType});
    SentDrag over(empty);
    over.data.setData(rowType, "0");
    EXPECT_NE(over.drop({20, 20}), Qt::IgnoreAction);
    EXPECT_THAT(delegate.dropped, ElementsAre(placeAbove(0)));
}

TEST_F(TableViewDraggingTest, ShowsWhereAnAllowedDropWouldLandAndNothingWhereItIsRefused)
{
    const QImage without = picture();
    drag.enter();
    EXPECT_NE(drag.move(above(1)), Qt::IgnoreAction);
    const QImage betweenFirstTwo = picture();
    EXPECT_NE(betweenFirstTwo, without);
    EXPECT_EQ(drag.move(on(1)), Qt::IgnoreAction);
    EXPECT_EQ(picture(), without);
    EXPECT_NE(drag.move(below(1)), Qt::IgnoreAction);
    EXPECT_NE(picture(), without);
    EXPECT_NE(picture(), betweenFirstTwo);
    drag.leave();
    EXPECT_EQ(picture(), without);
    drag.move(above(1));
    drag.drop(above(1));
    EXPECT_EQ(picture(), without);
}

TEST_F(TableViewDraggingTest, ADropReachesTheDelegateOnce)
{
    drag.enter();
    drag.move(above(2));
    EXPECT_THAT(delegate.dropped, IsEmpty());
    EXPECT_NE(drag.drop(above(2)), Qt::IgnoreAction);
    EXPECT_THAT(delegate.dropped, ElementsAre(placeAbove(2)));
}

TEST_F(TableViewDraggingTest, ADropThatIsRefusedAtLastIsNotReportedAsDone)
{
    delegate.accepts = false;
    EXPECT_EQ(drag.drop(above(2)), Qt::IgnoreAction);
    EXPECT_THAT(delegate.dropped, ElementsAre(placeAbove(2)));
    delegate.dropped.clear();
    EXPECT_EQ(drag.drop(on(2)), Qt::IgnoreAction);
    EXPECT_THAT(delegate.dropped, IsEmpty());
}

TEST_F(TableViewDraggingTest, OtherTypesAreRefusedWithoutAskingAnybody)
{
    drag.data.clear();
    drag.data.setData(QStringLiteral("OtherType"), QByteArray(1 << 20, '\xff'));
    drag.data.setText(QStringLiteral("text"));
    EXPECT_FALSE(drag.enter());
    EXPECT_EQ(drag.move(above(1)), Qt::IgnoreAction);
    EXPECT_EQ(drag.drop(above(1)), Qt::IgnoreAction);
    EXPECT_THAT(delegate.asked, IsEmpty());
}

TEST_F(TableViewDraggingTest, WithoutADelegateEverythingIsRefused)
{
    view.setDelegate(nullptr);
    EXPECT_EQ(drag.move(above(1)), Qt::IgnoreAction);
    EXPECT_EQ(drag.drop(above(1)), Qt::IgnoreAction);
}

TEST_F(TableViewDraggingTest, FilesOfOtherProgramsAreOnlyEverCopied)
{
    drag.data.clear();
    drag.data.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a"))});
    for (const Qt::KeyboardModifier modifiers : {Qt::NoModifier, Qt::ShiftModifier}) {
        drag.modifiers = modifiers;
        EXPECT_EQ(drag.move(above(1)), Qt::CopyAction);
        EXPECT_EQ(drag.drop(above(1)), Qt::CopyAction);
    }
    // Unless there is nothing else to be had.
    drag.possible = Qt::MoveAction;
    EXPECT_EQ(drag.drop(above(1)), Qt::MoveAction);
}

TEST_F(TableViewDraggingTest, AHundredFilesReachTheDelegateInTheirOrder)
{
    QList<QUrl> urls;
    QStringList paths;
    for (int number = 0; number < 100; ++number) {
        paths.append(QStringLiteral("/vanished/%1.qnbp").arg(number));
        urls.append(QUrl::fromLocalFile(paths.constLast()));
    }
    urls.insert(50, QUrl(QStringLiteral("https://example.org/x.qnbp")));
    drag.data.clear();
    drag.data.setUrls(urls);
    drag.drop(above(0));
    EXPECT_EQ(delegate.paths, paths);
}

TEST_F(TableViewDraggingTest, OwnDragsDoWhatIsAllowedToBothAndAskedForByKey)
{
    Pasteboard(drag.data).declareTypes({rowType});
    EXPECT_EQ(drag.move(above(1)), Qt::MoveAction);
    EXPECT_EQ(delegate.mask,
              DragOperation::Move | DragOperation::Copy | DragOperation::Link | DragOperation::Generic);
    drag.modifiers = Qt::ControlModifier;
    EXPECT_EQ(drag.move(above(1)), Qt::IgnoreAction);
    EXPECT_EQ(delegate.mask, DragOperation::Copy);
    drag.modifiers = Qt::ControlModifier | Qt::ShiftModifier;
    drag.move(above(1));
    EXPECT_EQ(delegate.mask, DragOperation::Link);
    drag.modifiers = Qt::ShiftModifier;
    EXPECT_EQ(drag.drop(above(1)), Qt::MoveAction);
    EXPECT_EQ(delegate.mask, DragOperation::Move | DragOperation::Generic);
    drag.modifiers = Qt::ControlModifier;
    delegate.allowed = DragOperation::Every;
    EXPECT_EQ(drag.move(above(1)), Qt::CopyAction);
}

TEST_F(TableViewDraggingTest, DraggingARowAsksForItsDataAndLeavesSelectionAndRowsAlone)
{
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, on(1));
    const int distance = QApplication::startDragDistance();
    for (const int step : {1, 2})
        QTest::mouseMove(view.viewport(), on(1) + QPoint(0, step * distance));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, on(2));
    EXPECT_THAT(delegate.written, ElementsAre(1));
    EXPECT_EQ(view.selectedRow(), 1);
}

TEST_F(TableViewDraggingTest, OurViewsSeeNothingOfAPromisedFileAndOthersDo)
{
    int writes = 0;
    auto declared = std::make_unique<QMimeData>();
    Pasteboard(*declared).declareTypes({PasteboardType::filesPromise, rowType});
    const auto delivered = std::make_shared<PromisedFiles>();
    const DragData data(std::move(declared), DragOperation::Move,
                        std::make_shared<PromisedFile>(QStringLiteral("a.txt"),
                                                       [&writes](const QUrl &) {
                                                           ++writes;
                                                           return QString();
                                                       }),
                        delivered);
    EXPECT_TRUE(data.formats().contains(PasteboardType::filenames));
    EXPECT_TRUE(data.hasUrls());
    const Pasteboard seen(DragData::declaredBy(data));
    EXPECT_THAT(seen.types(), ElementsAre(PasteboardType::filesPromise, rowType));
    EXPECT_FALSE(seen.propertyListForType(PasteboardType::filenames).isValid());
    EXPECT_TRUE(seen.isFromThisProcess());
    EXPECT_EQ(writes, 0);
}

} // namespace
