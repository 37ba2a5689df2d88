// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/ZBIconCell.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <cmath>

namespace {

// That the column is wider than what the image adds to the cell's size is part of the design.
constexpr int imageColumnExtraWidth = 15;
constexpr int imageLeftInset = 12;
constexpr int cellSizeExtraWidth = 12;

using Position = QStyleOptionViewItem::ViewItemPosition;

// To the style the two parts are neighbours, so that their selection is one.
Position positionOfColumn(Position cell)
{
    if (cell == QStyleOptionViewItem::OnlyOne)
        return QStyleOptionViewItem::Beginning;
    return cell == QStyleOptionViewItem::End ? QStyleOptionViewItem::Middle : cell;
}
Position positionOfText(Position cell)
{
    if (cell == QStyleOptionViewItem::OnlyOne)
        return QStyleOptionViewItem::End;
    return cell == QStyleOptionViewItem::Beginning ? QStyleOptionViewItem::Middle : cell;
}

/// Also selected rows have their icons as they are: in the colour of the selection nobody could tell labels.
QIcon::Mode iconMode(QStyle::State state)
{
    return state.testFlag(QStyle::State_Enabled) ? QIcon::Normal : QIcon::Disabled;
}

} // namespace

std::unique_ptr<TextFieldCell> ZBIconCell::copy() const
{
    return std::make_unique<ZBIconCell>(*this);
}

void ZBIconCell::setImage(const QIcon &image, const QSize &size)
{
    image_ = image;
    imageSize_ = image.isNull() ? QSize(0, 0) : size;
}

QRect ZBIconCell::imageFrameForCellFrame(const QRect &cellFrame) const
{
    if (image_.isNull())
        return QRect(0, 0, 0, 0);
    const int above = static_cast<int>(std::ceil((cellFrame.height() - imageSize_.height()) / 2.0));
    return QRect(cellFrame.topLeft() + QPoint(imageLeftInset, above), imageSize_);
}

QSize ZBIconCell::cellSize(const QStyleOptionViewItem &option) const
{
    return TextFieldCell::cellSize(option) + QSize(imageSize_.width() + cellSizeExtraWidth, 0);
}

void ZBIconCell::drawWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                               QPainter &painter) const
{
    if (image_.isNull()) {
        TextFieldCell::drawWithFrame(cellFrame, option, painter);
        return;
    }
    const Division division = divide(cellFrame, option.direction);
    QStyleOptionViewItem column(option);
    column.rect = division.imageColumn;
    column.viewItemPosition = positionOfColumn(option.viewItemPosition);
    column.features = QStyleOptionViewItem::None;
    column.text.clear();
    // Some styles select texts alone, and there is none in the column.
    if (!option.showDecorationSelected)
        column.state.setFlag(QStyle::State_Selected, false);
    const QStyle &style = option.widget ? *option.widget->style() : *QApplication::style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &column, &painter, option.widget);

    const QRect imageFrame =
        QStyle::visualRect(option.direction, cellFrame, imageFrameForCellFrame(cellFrame));
    image_.paint(&painter, imageFrame, Qt::AlignCenter, iconMode(option.state),
                 option.state.testFlag(QStyle::State_Open) ? QIcon::On : QIcon::Off);

    QStyleOptionViewItem text(option);
    text.viewItemPosition = positionOfText(option.viewItemPosition);
    TextFieldCell::drawWithFrame(division.remainder, text, painter);
}

void ZBIconCell::editWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                               QWidget &editor) const
{
    TextFieldCell::editWithFrame(divide(cellFrame, option.direction).remainder, option, editor);
}

ZBIconCell::Division ZBIconCell::divide(const QRect &cellFrame, Qt::LayoutDirection direction) const
{
    // A cell narrower than the column has nothing left, beside the column all the same.
    const int columnWidth = imageSize_.width() + imageColumnExtraWidth;
    const QRect column(cellFrame.left(), cellFrame.top(), columnWidth, cellFrame.height());
    const QRect remainder(cellFrame.left() + columnWidth, cellFrame.top(),
                          std::max(0, cellFrame.width() - columnWidth), cellFrame.height());
    return {QStyle::visualRect(direction, cellFrame, column),
            QStyle::visualRect(direction, cellFrame, remainder)};
}
