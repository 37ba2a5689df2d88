// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TextFieldCell.h"

#include "FakeTree.h"
#include "Toolkit/OutlineView.h"

#include <QLineEdit>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QTest>
#include <gtest/gtest.h>

namespace {

/// Shows what the view gives it and what it is asked.
class RecordingCell final : public TextFieldCell
{
public:
    void setImage(const QIcon &image, const QSize &size) override
    {
        imageSize = image.isNull() ? QSize() : size;
    }
    void drawWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                       QPainter &painter) const override
    {
        drawn << QStringLiteral("%1 %2").arg(option.text).arg(imageSize.width());
        TextFieldCell::drawWithFrame(cellFrame, option, painter);
    }
    QSize cellSize(const QStyleOptionViewItem &option) const override
    {
        return TextFieldCell::cellSize(option) + QSize(0, 40);
    }

    QSize imageSize;
    mutable QStringList drawn;
};

class TextFieldCellTest : public ::testing::Test
{
protected:
    TextFieldCellTest()
    {
        QPixmap pixmap(16, 16);
        pixmap.fill(Qt::red);
        tree.image = QIcon(pixmap);
        tree.root->add(QStringLiteral("one"));
        tree.root->add(QStringLiteral("two"));
        tree.isEditable = true;
        view.setDataSource(&tree);
        view.setIconSize(QSize(16, 16));
        view.resize(300, 200);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
    }
    ~TextFieldCellTest() override { view.setDataSource(nullptr); }

    FakeTree tree;
    OutlineView view;
};

TEST_F(TextFieldCellTest, RowsAreLeftToTheStyleUntilThereIsACell)
{
    EXPECT_EQ(view.dataCell(), nullptr);
    view.editRow(0);
    EXPECT_TRUE(view.isEditing());
}

TEST_F(TextFieldCellTest, TheCellDrawsEachRowAfterItGotTheRowsIcon)
{
    auto owned = std::make_unique<RecordingCell>();
    const RecordingCell &cell = *owned;
    view.setDataCell(std::move(owned));
    EXPECT_EQ(view.dataCell(), &cell);
    view.grab();
    EXPECT_TRUE(cell.drawn.contains(u"one 16"));
    EXPECT_TRUE(cell.drawn.contains(u"two 16"));
    tree.image = {};
    view.grab();
    EXPECT_EQ(cell.drawn.constLast(), u"two -1");
}

TEST_F(TextFieldCellTest, TheCellSaysHowHighRowsAre)
{
    const int before = view.visualRect(view.model()->index(0, 0)).height();
    view.setDataCell(std::make_unique<RecordingCell>());
    EXPECT_GT(view.visualRect(view.model()->index(0, 0)).height(), before + 20);
}

TEST_F(TextFieldCellTest, ACellIsNotEditedUnlessItIsEditable)
{
    view.setDataCell(std::make_unique<TextFieldCell>());
    EXPECT_FALSE(view.dataCell()->isEditable());
    view.editRow(0);
    EXPECT_FALSE(view.isEditing());
    view.dataCell()->setEditable(true);
    view.editRow(0);
    EXPECT_TRUE(view.isEditing());
}

TEST_F(TextFieldCellTest, EditingStandsOnTheTextAndSelectsIt)
{
    view.setDataCell(std::make_unique<TextFieldCell>());
    view.dataCell()->setEditable(true);
    view.editRow(1);
    const auto *editor = view.viewport()->findChild<QLineEdit *>();
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->selectedText(), u"two");
    EXPECT_TRUE(view.visualRect(view.model()->index(1, 0)).contains(editor->geometry()));
}

TEST_F(TextFieldCellTest, SelectsPartOfTheText)
{
    QLineEdit editor(QStringLiteral("some text"));
    QStyleOptionViewItem option;
    option.rect = QRect(10, 20, 200, 30);
    const TextFieldCell cell;
    cell.editWithFrame(option.rect, option, editor);
    EXPECT_EQ(editor.selectedText(), u"");
    const QRect place = editor.geometry();
    EXPECT_TRUE(option.rect.contains(place));
    cell.selectWithFrame(option.rect, option, editor, 5, 4);
    EXPECT_EQ(editor.selectedText(), u"text");
    EXPECT_EQ(editor.geometry(), place);
}

TEST_F(TextFieldCellTest, ACopyIsLikeTheOriginal)
{
    TextFieldCell cell;
    cell.setEditable(true);
    const std::unique_ptr<TextFieldCell> copy = cell.copy();
    cell.setEditable(false);
    EXPECT_TRUE(copy->isEditable());
}

} // namespace
