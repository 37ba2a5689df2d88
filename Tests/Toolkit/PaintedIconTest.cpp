// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PaintedIcon.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

constexpr QSize paintedSize(16, 16);

/// Red on the left half, nothing on the right.
void paintHalf(QPainter &painter, const QRectF &rect)
{
    painter.fillRect(QRectF(rect.topLeft(), QSizeF(rect.width() / 2, rect.height())), Qt::red);
}

QImage paintedImage(const QIcon &icon, qreal scale, QIcon::Mode mode = QIcon::Normal)
{
    return icon.pixmap(paintedSize, scale, mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

TEST(PaintedIconTest, IsPaintedWhenItIsFirstShownAndNotBefore)
{
    int times = 0;
    const QIcon icon = paintedIcon([&times](QPainter &, const QRectF &) { ++times; });
    EXPECT_FALSE(icon.isNull());
    EXPECT_EQ(times, 0);
    EXPECT_FALSE(icon.pixmap(paintedSize).isNull());
    EXPECT_FALSE(QIcon(icon).pixmap(paintedSize).isNull());
    EXPECT_EQ(times, 1);
    EXPECT_FALSE(icon.pixmap(paintedSize * 2).isNull());
    EXPECT_EQ(times, 2);
}

TEST(PaintedIconTest, IsNotTakenForAnother)
{
    const QIcon red = paintedIcon(paintHalf);
    const QIcon empty = paintedIcon([](QPainter &, const QRectF &) {});
    EXPECT_EQ(paintedImage(red, 1).pixelColor(0, 0), QColor(Qt::red));
    EXPECT_EQ(paintedImage(empty, 1).pixelColor(0, 0).alpha(), 0);
}

TEST(PaintedIconTest, IsCrispAtEachScale)
{
    for (const int scale : {1, 2, 3}) {
        const QImage image = paintedImage(paintedIcon(paintHalf), scale);
        ASSERT_EQ(image.size(), paintedSize * scale);
        EXPECT_EQ(image.pixelColor(8 * scale - 1, 0), QColor(Qt::red)) << scale;
        EXPECT_EQ(image.pixelColor(8 * scale, 0).alpha(), 0) << scale;
    }
}

TEST(PaintedIconTest, StaysSquareInTheMiddle)
{
    QImage screen(32, 16, QImage::Format_ARGB32);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    paintedIcon(paintHalf).paint(&painter, screen.rect());
    painter.end();
    EXPECT_EQ(screen.pixelColor(7, 0).alpha(), 0);
    EXPECT_EQ(screen.pixelColor(8, 0), QColor(Qt::red));
    EXPECT_EQ(screen.pixelColor(15, 0), QColor(Qt::red));
    EXPECT_EQ(screen.pixelColor(16, 0).alpha(), 0);
}

TEST(PaintedIconTest, DisabledItIsWithoutItsColour)
{
    const QIcon icon = paintedIcon(paintHalf);
    const QColor disabled = paintedImage(icon, 1, QIcon::Disabled).pixelColor(0, 0);
    EXPECT_GT(disabled.alpha(), 0);
    EXPECT_LT(disabled.saturation(), QColor(Qt::red).saturation());

    QImage screen(paintedSize * 2, QImage::Format_ARGB32);
    screen.setDevicePixelRatio(2);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    icon.paint(&painter, QRect({}, paintedSize), Qt::AlignCenter, QIcon::Disabled);
    painter.end();
    screen.setDevicePixelRatio(1);
    EXPECT_EQ(screen.pixelColor(15, 0), disabled);
    EXPECT_EQ(screen.pixelColor(16, 0).alpha(), 0);
}

} // namespace
