// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBHoverCell.h"

#include "Source/Controls/QColor+HexInitializer.h"
#include "Source/Controls/QNBHoverButton.h"

#include <QIcon>
#include <QPainter>
#include <gtest/gtest.h>
#include <vector>

namespace {

const QColor ground(253, 253, 253);
const QColor lit(230, 230, 230);
constexpr QRect square(4, 3, 10, 10);

class QNBHoverCellTest : public ::testing::TestWithParam<int>
{
protected:
    /// What the cell draws into a frame of 18 by 16 that begins at \a origin, on a red ground.
    QImage draw(int ratio = 1, const QPoint &origin = {})
    {
        QImage image(QSize(30, 30) * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::red);
        QPainter painter(&image);
        cell.drawBezelWithFrame(QRect(origin, QNBHoverCell::size), painter);
        cell.drawInteriorWithFrame(QRect(origin, QNBHoverCell::size), painter);
        return image;
    }

    QNBHoverButton button;
    QNBHoverCell &cell = button.cell();
};

/// No channel differs by more than \a tolerance.
testing::AssertionResult isAbout(const QColor &actual, const QColor &expected, int tolerance)
{
    const auto differs = [tolerance](int a, int b) { return std::abs(a - b) > tolerance; };
    if (differs(actual.red(), expected.red()) || differs(actual.green(), expected.green()) ||
        differs(actual.blue(), expected.blue()))
        return testing::AssertionFailure()
               << qPrintable(actual.name()) << " instead of " << qPrintable(expected.name());
    return testing::AssertionSuccess();
}

QColor between(const QColor &from, const QColor &to, qreal part)
{
    const auto mix = [part](int a, int b) { return qRound(a + (b - a) * part); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}

TEST_F(QNBHoverCellTest, ColorFromHexRGBReadsHexadecimalDigits)
{
    const QColor red = colorFromHexRGB(QStringLiteral("FF4E45"));
    EXPECT_FLOAT_EQ(red.redF(), 1.0F);
    EXPECT_FLOAT_EQ(red.greenF(), 78.0F / 255.0F);
    EXPECT_FLOAT_EQ(red.blueF(), 69.0F / 255.0F);
    EXPECT_FLOAT_EQ(red.alphaF(), 1.0F);
    EXPECT_EQ(red.rgba(), qRgba(255, 78, 69, 255));
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("ff4e45")), red);
}

TEST_F(QNBHoverCellTest, ColorFromHexRGBAcceptsAPrefix)
{
    const QColor blue = colorFromHexRGB(QStringLiteral("2A93FF"));
    EXPECT_EQ(blue.rgb(), qRgb(0x2a, 0x93, 0xff));
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("0x2A93FF")), blue);
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("0X2A93FF")), blue);
}

TEST_F(QNBHoverCellTest, ColorFromHexRGBOfWhatDoesNotBeginWithADigitIsBlack)
{
    for (const char *text : {"#FF0000", "", " FF0000", "red", "0x", "x"})
        EXPECT_EQ(colorFromHexRGB(QString::fromLatin1(text)).rgba(), qRgba(0, 0, 0, 255)) << text;
    EXPECT_EQ(colorFromHexRGB(QString()).rgba(), qRgba(0, 0, 0, 255));
}

TEST_F(QNBHoverCellTest, ColorFromHexRGBStopsAtTheFirstOtherCharacter)
{
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("FFzz45")).rgb(), qRgb(0, 0, 255));
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("99FF4E45")).rgb(), qRgb(0xff, 0x4e, 0x45));
    EXPECT_EQ(colorFromHexRGB(QStringLiteral("123456789")).rgb(), qRgb(255, 255, 255));
}

TEST_F(QNBHoverCellTest, ColorForGelGivesTheSamePairForRedInAnyCase)
{
    const auto red = QNBHoverCell::colorForGel(QStringLiteral("Red"));
    ASSERT_TRUE(red);
    EXPECT_EQ(red, QNBHoverCell::colorForGel(QStringLiteral("red")));
}

TEST_F(QNBHoverCellTest, ColorForGelGivesNothingForClearColorAndTheEmptyName)
{
    for (const char *name : {"clearColor", "clearcolor", "", "pink"})
        EXPECT_FALSE(QNBHoverCell::colorForGel(QString::fromLatin1(name))) << name;
    EXPECT_FALSE(QNBHoverCell::colorForGel({}));
}

TEST_F(QNBHoverCellTest, TheGelsAreTheDesignsColours)
{
    struct Expected
    {
        const char *name;
        QRgb dark;
        QRgb light;
    };
    const std::vector<Expected> gels = {
        {"gray", 0xff9a9a9a, 0xffc4c4c4},   {"purple", 0xffb87bd1, 0xffdeb1e6},
        {"blue", 0xff2a93ff, 0xff8dc6ff},   {"green", 0xffa5ce35, 0xffcce686},
        {"yellow", 0xfff2d434, 0xfffdef86}, {"orange", 0xffff9a30, 0xffffc37c},
        {"red", 0xffff4e45, 0xffff8f88},
    };
    for (const Expected &expected : gels) {
        const auto gel = QNBHoverCell::colorForGel(QString::fromLatin1(expected.name));
        ASSERT_TRUE(gel) << expected.name;
        EXPECT_EQ(gel->first.rgba(), expected.dark) << expected.name;
        EXPECT_EQ(gel->second.rgba(), expected.light) << expected.name;
    }
}

// Each drawing at once, twice and three times the resolution, and away from the origin.
INSTANTIATE_TEST_SUITE_P(AtScale, QNBHoverCellTest, testing::Values(1, 2, 3));

TEST_P(QNBHoverCellTest, TheWholeFrameHasTheLightGround)
{
    const int ratio = GetParam();
    button.setTitle(QStringLiteral("red"));
    const QPoint origin(7, 5);
    const QImage image = draw(ratio, origin);
    const QRect frame(origin * ratio, QNBHoverCell::size * ratio);
    for (const QPoint &corner : {frame.topLeft(), frame.topRight(), frame.bottomLeft(), frame.bottomRight()})
        EXPECT_EQ(image.pixelColor(corner), ground);
    EXPECT_EQ(image.pixelColor(frame.topLeft() - QPoint(1, 0)), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(frame.topLeft() - QPoint(0, 1)), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(frame.bottomRight() + QPoint(1, 0)), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(frame.bottomRight() + QPoint(0, 1)), QColor(Qt::red));
}

TEST_P(QNBHoverCellTest, AButtonThatIsOnButNotHoveredShowsTheHighlight)
{
    const int ratio = GetParam();
    EXPECT_EQ(draw(ratio).pixelColor(0, 0), ground);
    cell.setState(Qt::Checked);
    ASSERT_FALSE(cell.isHovered());
    const QImage image = draw(ratio);
    for (const QPoint &corner : {QPoint(0, 0), QPoint(18 * ratio - 1, 0), QPoint(0, 16 * ratio - 1)})
        EXPECT_EQ(image.pixelColor(corner), lit);
    cell.setState(Qt::PartiallyChecked);
    EXPECT_EQ(draw(ratio).pixelColor(0, 0), ground) << "on is on alone";
}

TEST_P(QNBHoverCellTest, AHoveredButtonShowsTheHighlight)
{
    cell.setIsHovered(true);
    EXPECT_EQ(draw(GetParam()).pixelColor(0, 0), lit);
    cell.setIsHovered(false);
    EXPECT_EQ(draw(GetParam()).pixelColor(0, 0), ground);
}

TEST_P(QNBHoverCellTest, SwitchingOffRemovesTheHighlightUntilThePointerMovesAgain)
{
    cell.setState(Qt::Checked);
    cell.mouseEntered();
    cell.setState(Qt::Unchecked);
    EXPECT_FALSE(cell.isHovered());
    EXPECT_EQ(draw(GetParam()).pixelColor(0, 0), ground);
    cell.mouseMoved();
    EXPECT_EQ(draw(GetParam()).pixelColor(0, 0), lit);
}

TEST_P(QNBHoverCellTest, WithoutImageAndGelThereIsTheWhiteShadowedSquareAndNoGradient)
{
    const int ratio = GetParam();
    button.setTitle(QStringLiteral("nothing of ours"));
    const QImage image = draw(ratio);
    const QRect white(square.topLeft() * ratio, square.size() * ratio);
    for (int y = white.top(); y <= white.bottom(); ++y) {
        for (int x = white.left(); x <= white.right(); ++x)
            ASSERT_EQ(image.pixelColor(x, y), QColor(Qt::white)) << x << ", " << y;
    }
    EXPECT_NE(image.pixelColor(white.bottomLeft() + QPoint(2, 1)), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(0, 0), ground);
    cell.setIsHovered(true);
    EXPECT_EQ(draw(ratio).pixelColor(0, 0), lit);
}

TEST_P(QNBHoverCellTest, TheShadowFallsBelowTheSquare)
{
    const int ratio = GetParam();
    const QImage image = draw(ratio);
    const int middle = 9 * ratio;
    const auto darkness = [&image](int x, int y) { return 253 - image.pixelColor(x, y).red(); };
    const int below = darkness(middle, 13 * ratio);
    const int above = darkness(middle, 3 * ratio - 1);
    const int left = darkness(4 * ratio - 1, middle);
    const int right = darkness(14 * ratio, middle);
    EXPECT_GT(below, 100);
    EXPECT_LT(below, 253 * 3 / 4 + 1) << "three quarters black at most";
    EXPECT_LT(above, below / 5);
    EXPECT_GT(left, above);
    EXPECT_LT(left, below);
    EXPECT_EQ(left, right);
    EXPECT_LT(darkness(middle, 16 * ratio - 1), 5) << "it ends within the frame";
    for (int y = 13 * ratio; y < 16 * ratio - 1; ++y)
        EXPECT_GE(darkness(middle, y), darkness(middle, y + 1)) << "it fades";
}

TEST_P(QNBHoverCellTest, TheShadowHasTheProfileOfItsScale)
{
    // Of a square of 10 that is moved down by 1 and blurred by a Gaussian of 1.25 / 2, three quarters black:
    // how much darker than the ground, pixel by pixel away from the middle of each side.
    struct Profile
    {
        std::vector<int> below;
        std::vector<int> above;
        std::vector<int> beside;
    };
    const std::vector<Profile> profiles = {
        {{150, 41, 2}, {2, 0}, {41, 2}},
        {{168, 124, 65, 22, 4, 0}, {4, 0, 0, 0}, {65, 22, 4, 0}},
        {{173, 150, 115, 75, 41, 17, 6, 2, 0}, {6, 2, 0, 0, 0, 0}, {75, 41, 17, 6, 2, 0}}};
    const int ratio = GetParam();
    const Profile &expected = profiles.at(static_cast<std::size_t>(ratio - 1));
    const QImage image = draw(ratio);
    const auto expectProfile = [&image](const std::vector<int> &profile, QPoint point, const QPoint &step) {
        for (const int darkness : profile) {
            EXPECT_NEAR(253 - image.pixelColor(point).red(), darkness, 1) << point.x() << ", " << point.y();
            point += step;
        }
    };
    expectProfile(expected.below, QPoint(9, 13) * ratio, QPoint(0, 1));
    expectProfile(expected.above, QPoint(9 * ratio, 3 * ratio - 1), QPoint(0, -1));
    expectProfile(expected.beside, QPoint(4 * ratio - 1, 8 * ratio), QPoint(-1, 0));
    expectProfile(expected.beside, QPoint(14, 8) * ratio, QPoint(1, 0));
}

TEST_P(QNBHoverCellTest, TheGradientEndsDarkBelowAndLightAbove)
{
    const int ratio = GetParam();
    for (const char *name : {"gray", "purple", "blue", "green", "yellow", "orange", "red"}) {
        button.setTitle(QString::fromLatin1(name));
        const auto [dark, light] = *QNBHoverCell::colorForGel(button.title());
        const QImage image = draw(ratio);
        const int rows = square.height() * ratio;
        for (int row = 0; row < rows; ++row) {
            const QColor expected = between(light, dark, (row + 0.5) / rows);
            const int y = square.top() * ratio + row;
            EXPECT_TRUE(isAbout(image.pixelColor(9 * ratio, y), expected, 2)) << name << " in row " << row;
        }
        EXPECT_EQ(image.pixelColor(0, 0), ground);
    }
}

TEST_P(QNBHoverCellTest, TheShadowIsTheSameUnderAGradient)
{
    const int ratio = GetParam();
    const QImage without = draw(ratio);
    button.setTitle(QStringLiteral("blue"));
    const QImage with = draw(ratio);
    const QRect swatch(square.topLeft() * ratio, square.size() * ratio);
    for (int y = 0; y < QNBHoverCell::size.height() * ratio; ++y) {
        for (int x = 0; x < QNBHoverCell::size.width() * ratio; ++x) {
            ASSERT_EQ(with.pixel(x, y) != without.pixel(x, y), swatch.contains(x, y)) << x << ", " << y;
        }
    }
}

TEST_P(QNBHoverCellTest, TheGradientHasRoundedCornersOnTheWhiteSquare)
{
    const int ratio = GetParam();
    button.setTitle(QStringLiteral("red"));
    const auto [dark, light] = *QNBHoverCell::colorForGel(button.title());
    const QImage image = draw(ratio);
    const QRect swatch(square.topLeft() * ratio, square.size() * ratio);
    const int corner = image.pixelColor(swatch.topLeft()).green();
    EXPECT_GT(corner, light.green() + 10) << "some white is seen";
    const QPoint edge = swatch.topLeft() + QPoint(0, 2 * ratio);
    EXPECT_TRUE(isAbout(image.pixelColor(edge), image.pixelColor(edge + QPoint(4 * ratio, 0)), 2))
        << "the sides are straight";
}

TEST_P(QNBHoverCellTest, OnADarkGroundThatGroundShows)
{
    const int ratio = GetParam();
    button.setPalette(QPalette(QColor(40, 40, 40)));
    button.setTitle(QStringLiteral("red"));
    const QImage plain = draw(ratio);
    EXPECT_EQ(plain.pixelColor(0, 0), QColor(Qt::red)) << "what it is drawn on";
    EXPECT_NE(plain.pixelColor(9 * ratio, 8 * ratio), QColor(Qt::red)) << "the swatch";
    cell.setIsHovered(true);
    const QColor highlight = draw(ratio).pixelColor(0, 0);
    EXPECT_GT(highlight.lightness(), plain.pixelColor(0, 0).lightness());
    EXPECT_NE(highlight, lit);
}

TEST_P(QNBHoverCellTest, OnADarkGroundATemplateImageIsLight)
{
    const int ratio = GetParam();
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::black);
    QIcon icon(pixmap);
    button.setPalette(QPalette(QColor(40, 40, 40)));
    button.setIcon(icon);
    EXPECT_LT(draw(ratio).pixelColor(QPoint(9, 9) * ratio).green(), 10) << "a picture stays as it is";
    icon.setIsMask(true);
    button.setIcon(icon);
    EXPECT_GT(draw(ratio).pixelColor(QPoint(9, 9) * ratio).green(), 150);
}

TEST_P(QNBHoverCellTest, AnImageIsDrawnIntoItsPlaceAtItsOpacity)
{
    const int ratio = GetParam();
    QPixmap pixmap(32, 16);
    pixmap.fill(QColor(0, 0, 200));
    button.setIcon(QIcon(pixmap));
    button.setTitle(QStringLiteral("red"));
    const QPoint origin(2, 1);
    const QImage image = draw(ratio, origin);
    const QColor expected = between(ground, QColor(0, 0, 200), 0.8);
    const QRect place((origin + QPoint(5, 5)) * ratio, QSize(8, 8) * ratio);
    const QRect frame(origin * ratio, QNBHoverCell::size * ratio);
    for (int y = frame.top(); y <= frame.bottom(); ++y) {
        for (int x = frame.left(); x <= frame.right(); ++x) {
            const QColor wanted = place.contains(x, y) ? expected : ground;
            ASSERT_TRUE(isAbout(image.pixelColor(x, y), wanted, 1)) << x << ", " << y;
        }
    }
}

} // namespace
