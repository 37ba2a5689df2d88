// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

const QString icons = QStringLiteral(QUENBY_RESOURCES "/icons/");

QImage drawn(const QString &name, int size)
{
    QSvgRenderer renderer(icons + name);
    EXPECT_TRUE(renderer.isValid()) << qPrintable(name);
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

/// How far two pictures are apart, from 0 to 255, as a mean of all pixels and channels.
double difference(const QImage &one, const QImage &other)
{
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            sum += std::abs(a.alpha() - b.alpha());
            for (const int channel :
                 {a.red() * a.alpha() - b.red() * b.alpha(), a.green() * a.alpha() - b.green() * b.alpha(),
                  a.blue() * a.alpha() - b.blue() * b.alpha()})
                sum += std::abs(channel) / 255.0;
        }
    }
    return sum / (4.0 * one.width() * one.height());
}

} // namespace

TEST(IconsTest, TheSmallPictureShowsWhatTheScalableOneDoes)
{
    const QImage small(icons + QStringLiteral("quenby-48.png"));
    ASSERT_EQ(small.size(), QSize(48, 48));
    const QImage scaled = drawn(QStringLiteral("quenby.svg"), 48);
    // Two renderers smooth edges differently; another picture is tens apart.
    EXPECT_LT(difference(small, scaled), 4);
    EXPECT_GT(difference(small, drawn(QStringLiteral("application-x-quenby-preset.svg"), 48)), 20);
}

TEST(IconsTest, TheSymbolicOneHasOneColour)
{
    const QImage image = drawn(QStringLiteral("quenby-symbolic.svg"), 64);
    int visible = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() < 255)
                continue;
            ++visible;
            ASSERT_EQ(color.rgb(), qRgb(0x2e, 0x34, 0x36)) << x << ' ' << y;
        }
    }
    EXPECT_GT(visible, 400);
}
