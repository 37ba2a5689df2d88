// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/ZBIconCell.h"

#include "Source/Controls/QNBOutlineViewAdditions.h"
#include "Tests/Toolkit/FakeTree.h"

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QTest>
#include <gtest/gtest.h>

namespace {

constexpr QSize iconSize(16, 16);
constexpr int textStart = 31;
/// An odd height: the icon stands between pixels.
constexpr QRect frame(10, 5, 200, 21);

QIcon iconOf(const QColor &color)
{
    QPixmap pixmap(iconSize);
    pixmap.fill(color);
    return QIcon(pixmap);
}

class ZBIconCellTest : public ::testing::Test
{
protected:
    ZBIconCellTest()
    {
        option.initFrom(&widget);
        option.widget = &widget;
        option.rect = frame;
        option.text = QStringLiteral("Some name");
        option.features = QStyleOptionViewItem::HasDisplay;
        option.state = QStyle::State_Enabled | QStyle::State_Active;
        option.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
        option.viewItemPosition = QStyleOptionViewItem::OnlyOne;
    }

    QImage draw(const TextFieldCell &drawn, const QRect &cellFrame = frame, int ratio = 1) const
    {
        QImage image(QSize(220, 32) * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(option.palette.color(QPalette::Base));
        QPainter painter(&image);
        drawn.drawWithFrame(cellFrame, option, painter);
        return image;
    }
    /// The smallest rectangle around everything that is not \a color.
    static QRect inkIn(const QImage &image, const QRect &part, const QColor &color)
    {
        QRect ink;
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x) {
                if (image.pixelColor(x, y) != color)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return ink;
    }
    QColor base() const { return option.palette.color(QPalette::Base); }

    QWidget widget;
    QStyleOptionViewItem option;
    TextFieldCell text;
    ZBIconCell cell;
};

TEST_F(ZBIconCellTest, ImageFrameStandsTwelveFromTheLeftAndInTheMiddle)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    EXPECT_EQ(cell.imageFrameForCellFrame(QRect(10, 20, 200, 20)), QRect(22, 22, 16, 16));
    EXPECT_EQ(cell.imageFrameForCellFrame(QRect(10, 20, 200, 19)), QRect(22, 22, 16, 16)) << "rounded up";
    EXPECT_EQ(cell.imageFrameForCellFrame(QRect(0, 0, 200, 13)), QRect(12, -1, 16, 16)) << "too large";
}

TEST_F(ZBIconCellTest, ACellWithoutAnImageIsPlainTextWhoseEditorLeavesRoomForTheImage)
{
    EXPECT_TRUE(cell.image().isNull());
    EXPECT_EQ(draw(cell), draw(text));
    EXPECT_EQ(cell.imageFrameForCellFrame(frame), QRect(0, 0, 0, 0));
    // The image's column is there for the editor all the same.
    QLineEdit editor;
    QLineEdit plain;
    cell.editWithFrame(frame, option, editor);
    text.editWithFrame(frame.adjusted(15, 0, 0, 0), option, plain);
    EXPECT_EQ(editor.geometry(), plain.geometry());
}

TEST_F(ZBIconCellTest, CellSizeIsTwentyEightWiderThanTheTextAloneForAnIconOfSixteen)
{
    const QSize alone = text.cellSize(option);
    EXPECT_EQ(cell.cellSize(option), alone + QSize(12, 0)) << "twelve without an image";
    cell.setImage(iconOf(Qt::red), iconSize);
    EXPECT_EQ(cell.cellSize(option), alone + QSize(28, 0));
    cell.setImage({}, iconSize);
    EXPECT_EQ(cell.cellSize(option), alone + QSize(12, 0));
}

TEST_F(ZBIconCellTest, TheTextStartsThirtyOneFromTheLeftEdge)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    const QImage image = draw(cell);
    const QImage plain = draw(text, frame.adjusted(textStart, 0, 0, 0));
    const QRect textPart = image.rect().adjusted(frame.left() + textStart, 0, 0, 0);
    EXPECT_EQ(image.copy(textPart), plain.copy(textPart));
    EXPECT_FALSE(inkIn(image, textPart, base()).isEmpty());
    const QRect imagePart(0, 0, frame.left() + textStart, image.height());
    EXPECT_EQ(inkIn(image, imagePart, base()), QRect(22, 5 + 3, 16, 16));
}

TEST_F(ZBIconCellTest, TheEditorStandsWhereTheTextStands)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    QLineEdit editor(option.text);
    QLineEdit plain(option.text);
    cell.editWithFrame(frame, option, editor);
    text.editWithFrame(frame.adjusted(textStart, 0, 0, 0), option, plain);
    EXPECT_EQ(editor.geometry(), plain.geometry());
    cell.selectWithFrame(frame, option, editor, 0, 4);
    EXPECT_EQ(editor.geometry(), plain.geometry());
    EXPECT_EQ(editor.selectedText(), u"Some");
}

TEST_F(ZBIconCellTest, LongNamesAreElidedAndStayBesideTheIcon)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.text = QString(200, u'W');
    const QImage image = draw(cell);
    const QRect gap(frame.left() + 28, 0, 3, image.height());
    EXPECT_TRUE(inkIn(image, gap, base()).isEmpty());
    const QRect beyond(frame.right() + 1, 0, image.width() - frame.right() - 1, image.height());
    EXPECT_TRUE(inkIn(image, beyond, base()).isEmpty());
}

TEST_F(ZBIconCellTest, TheSelectionLiesUnderIconAndTextWhereTheStyleWantsIt)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.state |= QStyle::State_Selected;
    option.showDecorationSelected = true;
    const QColor highlight = option.palette.color(QPalette::Active, QPalette::Highlight);
    const QImage image = draw(cell);
    for (int x = frame.left(); x <= frame.right(); ++x)
        ASSERT_EQ(image.pixelColor(x, frame.top()), highlight) << x;
    EXPECT_EQ(image.pixelColor(frame.left() - 1, frame.top()), base());
    EXPECT_EQ(image.pixelColor(frame.left() + textStart - 1, frame.center().y()), highlight);
}

TEST_F(ZBIconCellTest, TheSelectionLiesUnderTheTextAloneWhereTheStyleWantsIt)
{
    option.state |= QStyle::State_Selected;
    option.showDecorationSelected = false;
    cell.setImage(iconOf(Qt::transparent), iconSize);
    const QImage image = draw(cell);
    const QRect column(0, 0, frame.left() + textStart, image.height());
    EXPECT_TRUE(inkIn(image, column, base()).isEmpty());
    EXPECT_EQ(inkIn(image, image.rect(), base()),
              inkIn(draw(text, frame.adjusted(textStart, 0, 0, 0)), image.rect(), base()));
}

TEST_F(ZBIconCellTest, TextsAreReadableOnDarkGrounds)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.palette = QPalette(QColor(40, 40, 40));
    option.palette.setColor(QPalette::Base, QColor(20, 20, 20));
    const QImage image = draw(cell);
    int lightest = 0;
    for (int x = frame.left() + textStart; x < frame.right(); ++x)
        lightest = std::max(lightest, image.pixelColor(x, frame.center().y()).lightness());
    EXPECT_GT(lightest, 150);
}

TEST_F(ZBIconCellTest, IconsOfSelectedRowsKeepTheirColours)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.state |= QStyle::State_Selected;
    const QImage image = draw(cell);
    for (int y = 8; y < 8 + 16; ++y) {
        for (int x = 22; x < 22 + 16; ++x)
            ASSERT_EQ(image.pixelColor(x, y), QColor(Qt::red)) << x << ", " << y;
    }
}

TEST_F(ZBIconCellTest, IconsOfDisabledRowsAreDimmed)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.state &= ~QStyle::State_Enabled;
    EXPECT_NE(draw(cell).pixelColor(30, 15), QColor(Qt::red));
}

TEST_F(ZBIconCellTest, WhereTextsRunFromRightToLeftTheIconIsAtTheRight)
{
    cell.setImage(iconOf(Qt::red), iconSize);
    option.direction = Qt::RightToLeft;
    const QImage image = draw(cell);
    const int right = frame.right() + 1;
    const QRect imagePart(right - textStart, 0, image.width() - right + textStart, image.height());
    EXPECT_EQ(inkIn(image, imagePart, base()), QRect(right - 12 - 16, 5 + 3, 16, 16));
    QLineEdit editor(option.text);
    cell.editWithFrame(frame, option, editor);
    EXPECT_LT(editor.geometry().right(), right - textStart);
    EXPECT_GE(editor.geometry().left(), frame.left());
}

TEST_F(ZBIconCellTest, IconsAreCrispAtTwiceTheResolution)
{
    QIcon icon = iconOf(Qt::red);
    QPixmap large(iconSize * 2);
    large.fill(Qt::blue);
    icon.addPixmap(large);
    cell.setImage(icon, iconSize);
    EXPECT_EQ(inkIn(draw(cell), QRect(0, 0, 41, 32), base()), QRect(22, 8, 16, 16));
    EXPECT_EQ(draw(cell).pixelColor(30, 15), QColor(Qt::red));
    const QImage twice = draw(cell, frame, 2);
    EXPECT_EQ(inkIn(twice, QRect(0, 0, 82, 64), base()), QRect(44, 16, 32, 32));
    EXPECT_EQ(twice.pixelColor(60, 30), QColor(Qt::blue));
}

TEST_F(ZBIconCellTest, ACopyHasTheSameImageAsItsOwn)
{
    const QIcon red = iconOf(Qt::red);
    cell.setImage(red, iconSize);
    cell.setEditable(true);
    const std::unique_ptr<TextFieldCell> copy = cell.copy();
    cell.setImage(iconOf(Qt::blue), iconSize);
    const auto &copied = dynamic_cast<ZBIconCell &>(*copy);
    EXPECT_EQ(copied.image().cacheKey(), red.cacheKey());
    EXPECT_EQ(copied.imageFrameForCellFrame(frame).size(), iconSize);
    EXPECT_TRUE(copied.isEditable());
}

/// The real editor in a real outline; also run at twice the scale.
class ZBIconCellEditor : public ::testing::Test
{
protected:
    ZBIconCellEditor()
    {
        tree.image = iconOf(Qt::red);
        tree.isEditable = true;
        FakeTree::NodePtr node = tree.root->add(QStringLiteral("top"));
        for (int depth = 1; depth < deepest; ++depth)
            node = node->add(QString::number(depth));
        tree.root->add(QString(300, u'W'));
        outline.setIconSize(iconSize);
        outline.setDataSource(&tree);
        auto cell = std::make_unique<ZBIconCell>();
        cell->setEditable(true);
        outline.setDataCell(std::move(cell));
        outline.expandItem(nullptr, true);
        outline.resize(360, 500);
    }
    ~ZBIconCellEditor() override { outline.setDataSource(nullptr); }

    void show()
    {
        outline.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&outline));
        outline.setFocus();
    }

    /// Opens the editor of \a row by key, and types.
    void expectEditorBesideIcon(int row)
    {
        outline.selectRow(row);
        QTest::keyClick(&outline, Qt::Key_Return);
        auto *editor = outline.viewport()->findChild<QLineEdit *>();
        ASSERT_TRUE(editor) << row;
        expectBesideIcon(*editor);
        QTest::keyClicks(editor, QString(100, u'm'));
        expectBesideIcon(*editor);
        QTest::keyClick(editor, Qt::Key_Escape);
        ASSERT_TRUE(
            QTest::qWaitFor([this] { return outline.viewport()->findChildren<QLineEdit *>().isEmpty(); }));
    }

    void expectBesideIcon(const QLineEdit &editor) const
    {
        const QRect row = outline.visualRect(outline.currentIndex());
        if (outline.layoutDirection() == Qt::LeftToRight)
            EXPECT_GE(editor.geometry().left(), row.left() + textStart);
        else
            EXPECT_LE(editor.geometry().right(), row.right() - textStart);
        EXPECT_GE(editor.geometry().top(), row.top());
        EXPECT_LE(editor.geometry().bottom(), row.bottom());
    }

    static constexpr int deepest = 14;
    FakeTree tree;
    QNBOutlineView outline;
};

TEST_F(ZBIconCellEditor, NeverCoversTheIconOfALongName)
{
    show();
    expectEditorBesideIcon(deepest);
}

TEST_F(ZBIconCellEditor, NeverCoversTheIconOfADeeplyIndentedRow)
{
    show();
    expectEditorBesideIcon(0);
    expectEditorBesideIcon(deepest - 1);
}

TEST_F(ZBIconCellEditor, NeverCoversTheIconInANarrowView)
{
    outline.resize(deepest * outline.indentation() + 20, 500);
    show();
    expectEditorBesideIcon(deepest - 1);
}

TEST_F(ZBIconCellEditor, NeverCoversTheIconWhereTextsRunFromRightToLeft)
{
    outline.setLayoutDirection(Qt::RightToLeft);
    show();
    expectEditorBesideIcon(0);
    expectEditorBesideIcon(deepest - 1);
    expectEditorBesideIcon(deepest);
}

TEST_F(ZBIconCellEditor, StaysBesideTheIconWhenTheViewChangesItsSize)
{
    show();
    outline.selectRow(3);
    QTest::keyClick(&outline, Qt::Key_Return);
    const auto *editor = outline.viewport()->findChild<QLineEdit *>();
    ASSERT_TRUE(editor);
    outline.resize(250, 300);
    QCoreApplication::processEvents();
    expectBesideIcon(*editor);
}

} // namespace
