// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/TextFieldCell.h"

#include <QIcon>

/// A text cell that draws an icon at the left of its text (at the right where texts run from right to left).
class ZBIconCell : public TextFieldCell
{
public:
    std::unique_ptr<TextFieldCell> copy() const override;

    void setImage(const QIcon &image, const QSize &size) override;
    const QIcon &image() const { return image_; }

    /// Where the image stands in a cell that runs from left to right; the zero rectangle without an image.
    QRect imageFrameForCellFrame(const QRect &cellFrame) const;

    QSize cellSize(const QStyleOptionViewItem &option) const override;
    void drawWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                       QPainter &painter) const override;
    /// The editor gets what remains beside the image's column, which has its extra width also without an
    /// image.
    void editWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                       QWidget &editor) const override;

private:
    struct Division
    {
        QRect imageColumn;
        QRect remainder;
    };
    Division divide(const QRect &cellFrame, Qt::LayoutDirection direction) const;

    QIcon image_;
    QSize imageSize_ = {0, 0};
};
