// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TableView.h"

#include "FakeRecord.h"
#include "PaintedRegion.h"
#include "Tests/Session/ComposingInputMethod.h"
#include "Toolkit/ArrayController.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace {

const QString handleColumn = QStringLiteral("drag_handle");

/// Refuses empty labels and shows an image in the handle column.
class FakeDelegate final : public TableViewDelegate
{
public:
    void tableViewWillDisplayCell(TableView &, ViewCell &cell, const TableColumn &column, int row) override
    {
        if (column.identifier == labelKey && row == 1) {
            cell.note = note;
            cell.toolTip = note;
        }
        if (column.identifier == handleColumn) {
            QPixmap pixmap(8, 8);
            pixmap.fill(Qt::red);
            cell.image = QIcon(pixmap);
            cell.image.setIsMask(isMask);
        }
    }

    bool isMask = false;
    /// What the label of row 1 gets.
    QString note;

    bool tableViewValidateValue(TableView &, QVariant &value, const TableColumn &, int) override
    {
        value = value.toString().trimmed();
        return !value.toString().isEmpty();
    }
};

class TableViewTest : public ::testing::Test
{
protected:
    TableViewTest()
    {
        controller.setContent({FakeRecord::labelled(QStringLiteral("alpha")),
                               FakeRecord::labelled(QStringLiteral("beta")),
                               FakeRecord::labelled(QStringLiteral("gamma"))});
        view.setColumns({{.identifier = handleColumn, .width = 20},
                         {.identifier = labelKey, .key = labelKey, .isEditable = true}});
        view.setDelegate(&delegate);
        view.setController(&controller);
        view.resize(200, 200);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        view.setFocus();
    }

    ~TableViewTest() override { view.setDelegate(nullptr); }

    QLineEdit *editor() const { return view.viewport()->findChild<QLineEdit *>(); }
    QString label(int row) const
    {
        return controller.arrangedObjects().at(row)->valueForKey(labelKey).toString();
    }
    QPoint rowCenter(int row) const { return view.visualRect(view.model()->index(row, 1)).center(); }

    FakeDelegate delegate;
    ArrayController controller;
    TableView view;
    QAbstractItemModelTester tester{view.model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(TableViewTest, ShowsTheRecordsAndTheControllersSelection)
{
    EXPECT_EQ(view.model()->rowCount(), 3);
    EXPECT_EQ(view.model()->index(1, 1).data().toString(), u"beta");
    EXPECT_EQ(view.selectedRow(), 0);
    controller.setSelectionIndex(2);
    EXPECT_EQ(view.currentIndex().row(), 2);
    EXPECT_TRUE(view.selectionModel()->isRowSelected(2));
    controller.setSelectionIndex(ArrayController::noIndex);
    EXPECT_FALSE(view.selectionModel()->hasSelection());
}

TEST_F(TableViewTest, ShowsEveryCharacterAndEditsTheTextItself)
{
    const QString text = QStringLiteral("a\u202E\u009B\nb");
    controller.setValueForKey(text, labelKey, 1);
    const QModelIndex index = view.model()->index(1, 1);
    EXPECT_EQ(index.data(Qt::DisplayRole).toString(), u"a<U+202E><U+009B>␊b");
    EXPECT_EQ(index.data(Qt::EditRole).toString(), text);
    EXPECT_FALSE(view.model()->setData(index, text));
    EXPECT_EQ(label(1), text);
}

TEST_F(TableViewTest, ANoteStandsBehindTheTextAndIsNoPartOfIt)
{
    delegate.note = QStringLiteral("(second)");
    const QModelIndex index = view.model()->index(1, 1);
    EXPECT_EQ(index.data(Qt::DisplayRole).toString(), u"beta (second)");
    EXPECT_EQ(index.data(Qt::EditRole).toString(), u"beta");
    EXPECT_EQ(index.data(Qt::AccessibleDescriptionRole).toString(), u"(second)");
    EXPECT_EQ(view.model()->index(0, 1).data(Qt::DisplayRole).toString(), u"alpha");
    QHelpEvent event(QEvent::ToolTip, rowCenter(1), view.viewport()->mapToGlobal(rowCenter(1)));
    QCoreApplication::sendEvent(view.viewport(), &event);
    EXPECT_EQ(QToolTip::text(), u"<span>(second)</span>");
    QToolTip::hideText();
}

TEST_F(TableViewTest, AChangeShowsTheWholeColumnAnew)
{
    QSignalSpy changes(view.model(), &QAbstractItemModel::dataChanged);
    controller.setValueForKey(QStringLiteral("delta"), labelKey, 2);
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex(), view.model()->index(0, 1));
    EXPECT_EQ(changes[0][1].toModelIndex(), view.model()->index(2, 1));
}

TEST_F(TableViewTest, ClicksAndKeysSelectThroughTheController)
{
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, rowCenter(1));
    EXPECT_EQ(controller.selectionIndex(), 1);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(controller.selectionIndex(), 2);
    EXPECT_EQ(selection.count(), 2);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ControlModifier, rowCenter(2));
    EXPECT_EQ(controller.selectionIndex(), view.selectionModel()->hasSelection() ? 2 : -1);
}

TEST_F(TableViewTest, InsertionsAndRemovalsKeepViewAndControllerTogether)
{
    QSignalSpy rowsInserted(view.model(), &QAbstractItemModel::rowsInserted);
    QSignalSpy rowsRemoved(view.model(), &QAbstractItemModel::rowsRemoved);
    controller.insertObject(FakeRecord::labelled(QStringLiteral("new")), 1);
    EXPECT_EQ(view.currentIndex().row(), 1);
    controller.remove();
    EXPECT_EQ(controller.selectionIndex(), 1);
    EXPECT_EQ(view.currentIndex().row(), 1);
    controller.setSelectionIndex(2);
    controller.remove();
    EXPECT_EQ(controller.selectionIndex(), 1);
    EXPECT_TRUE(view.selectionModel()->isRowSelected(1));
    EXPECT_EQ(rowsInserted.count(), 1);
    EXPECT_EQ(rowsRemoved.count(), 2);
    controller.setContent({});
    EXPECT_EQ(view.model()->rowCount(), 0);
    EXPECT_FALSE(view.currentIndex().isValid());
}

TEST_F(TableViewTest, EditsInPlaceWithTheTextSelected)
{
    view.editColumn(labelKey, 1);
    ASSERT_TRUE(editor());
    EXPECT_TRUE(view.isEditing());
    EXPECT_EQ(editor()->selectedText(), u"beta");
    QTest::keyClicks(editor(), QStringLiteral("delta"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !view.isEditing(); }));
    EXPECT_EQ(label(1), u"delta");
}

TEST_F(TableViewTest, EditKeyWorksFromEveryColumn)
{
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                      view.visualRect(view.model()->index(2, 0)).center());
    QTest::keyClick(&view, Qt::Key_F2);
    ASSERT_TRUE(editor());
    EXPECT_EQ(editor()->text(), u"gamma");
}

TEST_F(TableViewTest, EscapeLeavesTheRecordAlone)
{
    view.editColumn(labelKey, 0);
    QTest::keyClicks(editor(), QStringLiteral("xyz"));
    QTest::keyClick(editor(), Qt::Key_Escape);
    EXPECT_EQ(label(0), u"alpha");
}

TEST_F(TableViewTest, EndEditingKeepsWhatWasTyped)
{
    view.editColumn(labelKey, 0);
    QTest::keyClicks(editor(), QStringLiteral("half"));
    view.endEditing();
    EXPECT_EQ(label(0), u"half");
    EXPECT_FALSE(view.isEditing());
    view.endEditing();
    EXPECT_EQ(label(0), u"half");
}

TEST_F(TableViewTest, EndEditingKeepsWhatIsBeingComposed)
{
    ComposingInputMethod inputMethod;
    view.editColumn(labelKey, 0);
    editor()->setFocus();
    inputMethod.compose(QStringLiteral("\u65e5\u672c"));
    view.endEditing();
    EXPECT_EQ(label(0), u"\u65e5\u672c");
}

TEST_F(TableViewTest, TheDelegateRefusesOrAmendsValues)
{
    QAbstractItemModel &model = *view.model();
    EXPECT_FALSE(model.setData(model.index(0, 1), QStringLiteral("   ")));
    EXPECT_EQ(label(0), u"alpha");
    EXPECT_TRUE(model.setData(model.index(0, 1), QStringLiteral(" omega ")));
    EXPECT_EQ(label(0), u"omega");
}

TEST_F(TableViewTest, AnUnchangedTextKeepsTheValuesType)
{
    controller.setValueForKey(42, labelKey, 0);
    view.editColumn(labelKey, 0);
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(controller.arrangedObjects().at(0)->valueForKey(labelKey), QVariant(42));
}

TEST_F(TableViewTest, ATextOfAnyLengthOutlivesItsEditor)
{
    const QString longText(100'000, u'x');
    controller.setValueForKey(longText, labelKey, 0);
    view.editColumn(labelKey, 0);
    ASSERT_TRUE(editor());
    QTest::keyClick(editor(), Qt::Key_End);
    QTest::keyClicks(editor(), QStringLiteral(" end"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !view.isEditing(); }));
    EXPECT_TRUE(label(0) == longText + QStringLiteral(" end")) << label(0).size() << " characters";
}

TEST_F(TableViewTest, HandleColumnIsNarrowShowsItsImageAndIsNotEditable)
{
    const QModelIndex handle = view.model()->index(0, 0);
    EXPECT_EQ(view.columnWidth(0), 20);
    EXPECT_FALSE(handle.data(Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_FALSE(view.model()->index(0, 1).data(Qt::DecorationRole).isValid());
    EXPECT_FALSE(handle.flags() & Qt::ItemIsEditable);
    EXPECT_FALSE(view.model()->setData(handle, QStringLiteral("x")));
}

TEST_F(TableViewTest, ColumnsWithoutTextsAreCalledAfterTheirRow)
{
    view.setController(nullptr);
    view.setColumns({{.identifier = handleColumn, .width = 20, .accessibleName = QStringLiteral("Take %1")},
                     {.identifier = labelKey, .key = labelKey, .isEditable = true}});
    view.setController(&controller);
    EXPECT_EQ(view.model()->index(1, 0).data(Qt::AccessibleTextRole).toString(), u"Take beta");
    EXPECT_FALSE(view.model()->index(1, 1).data(Qt::AccessibleTextRole).isValid());
}

TEST_F(TableViewTest, WithNothingSelectedKeysSelectARow)
{
    const std::pair<Qt::Key, int> keys[] = {
        {Qt::Key_Down, 0}, {Qt::Key_Home, 0}, {Qt::Key_Up, 2}, {Qt::Key_End, 2}};
    for (const auto &[key, row] : keys) {
        controller.setSelectionIndex(ArrayController::noIndex);
        // As it is when the view gets the keyboard.
        view.selectionModel()->setCurrentIndex(view.model()->index(0, 0), QItemSelectionModel::NoUpdate);
        QTest::keyClick(&view, key);
        EXPECT_EQ(controller.selectionIndex(), row) << key;
        EXPECT_TRUE(view.selectionModel()->isRowSelected(row)) << key;
    }
    controller.setContent({});
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(controller.selectionIndex(), ArrayController::noIndex);
}

TEST_F(TableViewTest, TheEditKeyNeedsASelectedRow)
{
    controller.setSelectionIndex(ArrayController::noIndex);
    view.selectionModel()->setCurrentIndex(view.model()->index(0, 0), QItemSelectionModel::NoUpdate);
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_FALSE(view.isEditing());
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_TRUE(view.isEditing());
}

TEST_F(TableViewTest, AMaskIsDrawnInTheColourOfTheText)
{
    delegate.isMask = true;
    // The frame of what has the keyboard would lie over the row if that were the view itself.
    QLineEdit inside(view.viewport());
    inside.setGeometry(0, view.viewport()->height() - 10, 10, 10);
    inside.show();
    inside.setFocus();
    QPalette palette;
    palette.setColor(QPalette::Text, Qt::blue);
    palette.setColor(QPalette::HighlightedText, Qt::yellow);
    palette.setColor(QPalette::Highlight, Qt::darkGreen);
    view.setPalette(palette);
    const auto middleOfHandle = [this](int row) {
        const QImage image = view.viewport()->grab().toImage();
        return image.pixelColor(view.visualRect(view.model()->index(row, 0)).center());
    };
    controller.setSelectionIndex(1);
    EXPECT_EQ(middleOfHandle(0), QColor(Qt::blue));
    EXPECT_EQ(middleOfHandle(1), QColor(Qt::yellow));
    delegate.isMask = false;
    EXPECT_EQ(middleOfHandle(0), QColor(Qt::red)) << "any other image keeps its colours";
}

TEST_F(TableViewTest, AllIsPaintedAnewWhenTheKeyboardComesAndGoesWithAnEditor)
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *beside = new QLineEdit;
    layout->addWidget(beside);
    layout->addWidget(&view);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    beside->setFocus();
    QCoreApplication::processEvents();
    PaintedRegion painted(*view.viewport());
    view.editColumn(labelKey, 0);
    ASSERT_TRUE(view.isEditing());
    const auto isAllPainted = [&] { return painted.region == QRegion(view.viewport()->rect()); };
    EXPECT_TRUE(QTest::qWaitFor(isAllPainted));
    painted.region = {};
    beside->setFocus();
    EXPECT_TRUE(QTest::qWaitFor(isAllPainted));
    EXPECT_FALSE(view.isEditing());
    view.setParent(nullptr);
}

TEST_F(TableViewTest, ATextThatDoesNotFitIsTheToolTip)
{
    const QString longText = QStringLiteral("<b>a text</b> that is far wider than the view, ").repeated(5);
    view.setToolTip(QStringLiteral("of the view"));
    controller.setValueForKey(longText, labelKey, 1);
    const auto toolTipAt = [this](const QPoint &place) {
        QToolTip::hideText();
        QHelpEvent event(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &event);
        return QToolTip::text();
    };
    EXPECT_EQ(toolTipAt(rowCenter(1)), QStringLiteral("<span>%1</span>").arg(longText.toHtmlEscaped()));
    EXPECT_EQ(toolTipAt(rowCenter(0)), u"of the view");
    view.resize(3000, 200);
    EXPECT_EQ(toolTipAt(view.visualRect(view.model()->index(1, 1)).topLeft() + QPoint(5, 5)), u"of the view");
    QToolTip::hideText();
}

TEST_F(TableViewTest, AnEmptyListSaysSo)
{
    controller.setContent({});
    const QImage without = view.viewport()->grab().toImage();
    view.setPlaceholderText(QStringLiteral("Nothing here"));
    const QImage with = view.viewport()->grab().toImage();
    EXPECT_NE(without, with);
    controller.addObject(FakeRecord::labelled(QStringLiteral("x")));
    const QImage filled = view.viewport()->grab().toImage();
    view.setPlaceholderText({});
    EXPECT_EQ(filled, view.viewport()->grab().toImage());
}

} // namespace
