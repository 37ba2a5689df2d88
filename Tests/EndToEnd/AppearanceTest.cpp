// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The pictures that these tests look at are kept in the folder that the variable QUENBY_SCREENSHOTS names, if
// there is one.

#include "Tests/EndToEnd/EditorFixture.h"

#include <QDir>
#include <QFile>
#include <QImage>

namespace {

/// What a desktop in dark colours tells its programs; the first group of numbers is for windows.
const QByteArray darkColors = R"([KDE]
widgetStyle=Fusion
[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundLink=29,153,243
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
)";

/// Where an item's icon is, from the left edge of its row.
constexpr int iconOffset = 12;
constexpr int iconSize = 16;

struct Appearance
{
    const char *name;
    int scale;
    bool isDark;
    int pointSize = 10;
    /// In pixels.
    QSize screen = VirtualScreen::usualSize * scale;
};

class AppearanceTest : public EditorFixture, public ::testing::WithParamInterface<Appearance>
{
protected:
    AppearanceTest()
        : EditorFixture(GetParam().screen)
    {
        session_.setVariable(QStringLiteral("QT_SCALE_FACTOR"), QString::number(GetParam().scale));
        if (GetParam().isDark || GetParam().pointSize != Appearance().pointSize) {
            session_.setVariable(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
            session_.setVariable(QStringLiteral("KDE_SESSION_VERSION"), QStringLiteral("5"));
            QFile colors(session_.home().configFolder() + QStringLiteral("/kdeglobals"));
            EXPECT_TRUE(colors.open(QIODevice::WriteOnly));
            if (GetParam().isDark)
                colors.write(darkColors);
            colors.write(QByteArray("[General]\nfont=DejaVu Sans,") +
                         QByteArray::number(GetParam().pointSize) + ",-1,5,50,0,0,0,0,0\n");
        }
    }

    /// The screen, once it has come to rest; kept as \a name if that is wanted.
    QImage picture(const QString &name)
    {
        QByteArray last;
        EXPECT_TRUE(waitUntil([&] {
            const QByteArray next =
                screen_.ask(QStringLiteral("import"),
                            {QStringLiteral("-window"), QStringLiteral("root"), QStringLiteral("png24:-")});
            return std::exchange(last, next) == next;
        }));
        const QImage image = QImage::fromData(last);
        const QString folder = qEnvironmentVariable("QUENBY_SCREENSHOTS");
        const QString file =
            QStringLiteral("%1-%2.png").arg(name, QString::fromLatin1(GetParam().name).toLower());
        EXPECT_TRUE(folder.isEmpty() || image.save(QDir(folder).filePath(file)));
        return image;
    }
    /// The part of \a picture where the program says that \a place is.
    static QImage part(const QImage &picture, const QRect &place)
    {
        const int scale = GetParam().scale;
        return picture.copy(QRect(place.topLeft() * scale, place.size() * scale));
    }
    QImage icon(const QImage &picture, const QString &item) const
    {
        const QRect row = pane_.item(item);
        return part(picture,
                    QRect(row.left() + iconOffset, row.center().y() - iconSize / 2, iconSize, iconSize));
    }
    static int averageOf(const QImage &image)
    {
        qint64 sum = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                sum += qGray(image.pixel(x, y));
        }
        return int(sum / (qint64(image.width()) * image.height()));
    }
    /// How many pixels are of a strong colour about this hue.
    static int strongPixels(const QImage &image, int hue)
    {
        int result = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                const int distance = std::abs(color.hsvHue() - hue);
                const bool isStrong = color.hsvSaturation() > 60 && color.value() > 100;
                result += isStrong && std::min(distance, 360 - distance) < 15 ? 1 : 0;
            }
        }
        return result;
    }
};

} // namespace

TEST_P(AppearanceTest, LabelsAreSeen)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(goToItem(QStringLiteral("Brief.md")));
    const QImage window = picture(QStringLiteral("presets"));
    const int ground = averageOf(part(window, pane_.itemTree()));
    EXPECT_EQ(ground < 128, GetParam().isDark) << ground;
    EXPECT_NE(icon(window, QStringLiteral("Contracts")), icon(window, QStringLiteral("Texts")));
    EXPECT_NE(icon(window, QStringLiteral("Contracts")), icon(window, QStringLiteral("Finance")));

    ASSERT_NO_FATAL_FAILURE(openMenu(QStringLiteral("Menu")));
    QStringList windows = screen_.windowsOf(host_->pid());
    windows.removeOne(window_);
    ASSERT_EQ(windows.size(), 1);
    const QImage menu = picture(QStringLiteral("menu")).copy(screen_.placeOf(windows.constFirst()));
    for (const int hue : {4, 34, 54, 76, 213, 284})
        EXPECT_GT(strongPixels(menu, hue), 20) << hue;
}

TEST_P(AppearanceTest, WhatTheRecorderSaysOfAShortcutIsSeen)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(goToGeneralTab());
    picture(QStringLiteral("general"));
    const auto expectWords = [this](const QString &key, const QString &words, const QString &name) {
        user_.presses(key);
        ASSERT_TRUE(waitUntil([&] { return pane_.label(words); }, patience)) << qPrintable(words);
        const QImage shown = part(picture(name), pane_.placeOfLabel(words));
        ASSERT_FALSE(shown.isNull());
        // Ink on it, and of enough contrast.
        int darkest = 255;
        int lightest = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                darkest = std::min(darkest, qGray(shown.pixel(x, y)));
                lightest = std::max(lightest, qGray(shown.pixel(x, y)));
            }
        }
        EXPECT_GT(lightest - darkest, 120);
    };
    user_.presses({QStringLiteral("alt+s"), QStringLiteral("space")});
    ASSERT_NO_FATAL_FAILURE(
        expectWords(QStringLiteral("n"),
                    QStringLiteral("Every program needs N. Press it together with Ctrl, Alt or Meta."),
                    QStringLiteral("refusal")));
    ASSERT_NO_FATAL_FAILURE(expectWords(
        QStringLiteral("ctrl+s"),
        QStringLiteral("Most programs use Ctrl+S for \"Save\". Press it again to take it all the same."),
        QStringLiteral("remark")));
}

INSTANTIATE_TEST_SUITE_P(Desktops, AppearanceTest,
                         ::testing::Values(Appearance{"Light", 1, false}, Appearance{"Dark", 1, true},
                                           Appearance{"Double", 2, false}, Appearance{"DarkDouble", 2, true},
                                           Appearance{"LargeDouble", 2, false, 14}),
                         [](const auto &appearance) { return std::string(appearance.param.name); });

namespace {

class SmallScreenTest : public AppearanceTest
{
};

} // namespace

TEST_P(SmallScreenTest, TheWindowAndTheMenuOfAnItemFitTheScreen)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    const QRect screen(QPoint(), GetParam().screen);
    const QRect window = screen_.placeOf(window_);
    EXPECT_TRUE(screen.contains(window)) << window.width() << "x" << window.height();
    ASSERT_NO_FATAL_FAILURE(goToItem(QStringLiteral("Brief.md")));
    picture(QStringLiteral("window"));

    ASSERT_NO_FATAL_FAILURE(openMenu(QStringLiteral("Menu")));
    QStringList windows = screen_.windowsOf(host_->pid());
    windows.removeOne(window_);
    ASSERT_EQ(windows.size(), 1);
    EXPECT_TRUE(screen.contains(screen_.placeOf(windows.constFirst())));
    picture(QStringLiteral("top"));
    // Backwards to its last entry, and on to the last row of that.
    user_.presses(QStringList{QStringLiteral("Up")});
    ASSERT_TRUE(waitUntil([&] { return reader_.focus().name() == u"Others: Read"; }, patience))
        << qPrintable(reader_.focus().name());
    picture(QStringLiteral("bottom"));
    const QRect box = reader_.focus().extents();
    EXPECT_TRUE(screen.contains(QRect(box.topLeft() * GetParam().scale, box.size() * GetParam().scale)))
        << box.y();
}

INSTANTIATE_TEST_SUITE_P(Desktops, SmallScreenTest,
                         ::testing::Values(Appearance{"Double", 2, false, 10, {1280, 800}},
                                           Appearance{"Large", 1, false, 20, {800, 600}},
                                           Appearance{"DarkLarge", 1, true, 20, {800, 600}}),
                         [](const auto &appearance) { return std::string(appearance.param.name); });
