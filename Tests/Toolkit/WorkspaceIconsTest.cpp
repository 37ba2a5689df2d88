// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/WorkspaceIcons.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr QSize iconSize(16, 16);

QImage imageOf(const QIcon &icon, qreal scale = 1.0)
{
    return icon.pixmap(iconSize, scale).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

bool looksLike(const QIcon &icon, const QIcon &other)
{
    return imageOf(icon) == imageOf(other) && imageOf(icon, 2.0) == imageOf(other, 2.0);
}

/// Whether there is something to see.
bool isVisible(const QIcon &icon)
{
    const QImage image = imageOf(icon);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).alpha() > 0)
                return true;
        }
    }
    return false;
}

/// A desktop without an icon theme, unless a test installs one.
class WorkspaceIconsTest : public ::testing::Test
{
protected:
    WorkspaceIconsTest()
        : searchPaths_(QIcon::themeSearchPaths())
        , fallbackPaths_(QIcon::fallbackSearchPaths())
        , name_(QIcon::themeName())
    {
        QIcon::setThemeSearchPaths({folder_.path()});
        QIcon::setFallbackSearchPaths({});
        QIcon::setThemeName(QStringLiteral("no-theme"));
    }
    ~WorkspaceIconsTest() override
    {
        QIcon::setThemeSearchPaths(searchPaths_);
        QIcon::setFallbackSearchPaths(fallbackPaths_);
        QIcon::setThemeName(name_);
    }

    /// A theme of plain squares, in the given colours.
    void installTheme(const QString &theme, const QMap<QString, QColor> &colors)
    {
        const QString index = QStringLiteral("[Icon Theme]\nName=%1\nDirectories=16,32\n"
                                             "[16]\nSize=16\nType=Fixed\n[32]\nSize=32\nType=Fixed\n");
        for (const int size : {16, 32}) {
            const QString folder = path(QStringLiteral("%1/%2").arg(theme).arg(size));
            ASSERT_TRUE(QDir().mkpath(folder));
            for (auto icon = colors.begin(); icon != colors.end(); ++icon) {
                QImage image(size, size, QImage::Format_ARGB32);
                image.fill(icon.value());
                ASSERT_TRUE(image.save(QStringLiteral("%1/%2.png").arg(folder, icon.key())));
            }
        }
        write(theme + QStringLiteral("/index.theme"), index.arg(theme).toUtf8());
        QIcon::setThemeName(theme);
    }

    QString path(const QString &name) const { return folder_.filePath(name); }

    void write(const QString &name, const QByteArray &bytes, bool isExecutable = false) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        const auto executable = isExecutable ? QFile::ExeOwner : QFile::Permission();
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | executable));
    }

    static QColor colorOf(const QIcon &icon) { return imageOf(icon).pixelColor(8, 8); }

    QIcon document() { return icons.iconForFile({}); }

    WorkspaceIcons icons;

private:
    const QTemporaryDir folder_;
    const QStringList searchPaths_;
    const QStringList fallbackPaths_;
    const QString name_;
};

TEST_F(WorkspaceIconsTest, WithoutAThemeNothingIsNullOrInvisible)
{
    for (const char *extension : {"", "txt", "png", "sh", "no-such-type"})
        EXPECT_TRUE(isVisible(icons.iconForFileType(QString::fromLatin1(extension)))) << extension;
    EXPECT_TRUE(isVisible(document()));
    EXPECT_TRUE(isVisible(icons.folderIcon()));
    EXPECT_TRUE(isVisible(icons.iconForFile(path(QStringLiteral("missing.txt")))));
    EXPECT_FALSE(looksLike(document(), icons.folderIcon()));
}

TEST_F(WorkspaceIconsTest, WithoutAThemeIconsAreCrispAtDoubleScale)
{
    EXPECT_EQ(imageOf(document(), 2.0).size(), iconSize * 2);
    EXPECT_EQ(imageOf(icons.folderIcon(), 2.0).size(), iconSize * 2);
}

TEST_F(WorkspaceIconsTest, ATypeHasItsOwnIconOrItsGenericOne)
{
    installTheme(QStringLiteral("theme"), {{QStringLiteral("text-html"), Qt::red},
                                           {QStringLiteral("text-x-generic"), Qt::white},
                                           {QStringLiteral("image-x-generic"), Qt::green}});
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("html"))), QColor(Qt::red));
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("HTML"))), QColor(Qt::red));
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("png"))), QColor(Qt::green));
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("txt"))), QColor(Qt::white));
}

TEST_F(WorkspaceIconsTest, AnUnknownTypeIsAGenericDocument)
{
    const QStringList extensions = {QString(),
                                    QStringLiteral("no-such-type"),
                                    QStringLiteral("*"),
                                    QStringLiteral("a/b"),
                                    QStringLiteral(" "),
                                    QString(QChar(0)),
                                    QString(QChar(0xD800)),
                                    QString(1000000, u'x')};
    for (const QString &extension : extensions)
        EXPECT_TRUE(looksLike(icons.iconForFileType(extension), document())) << qPrintable(extension.left(9));
}

TEST_F(WorkspaceIconsTest, AFileIsShownByItsExtension)
{
    installTheme(QStringLiteral("theme"), {{QStringLiteral("image-x-generic"), Qt::green}});
    write(QStringLiteral("picture.png"), "not really");
    write(QStringLiteral(".png"), "only hidden");
    write(QStringLiteral("png"), "only a name");
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("picture.png")))), QColor(Qt::green));
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("missing.png")))), QColor(Qt::green));
    EXPECT_TRUE(looksLike(icons.iconForFile(path(QStringLiteral(".png"))), document()));
    EXPECT_TRUE(looksLike(icons.iconForFile(path(QStringLiteral("png"))), document()));
}

TEST_F(WorkspaceIconsTest, AFolderIsAFolderWhateverItsName)
{
    installTheme(QStringLiteral("theme"), {{QStringLiteral("folder"), Qt::yellow},
                                           {QStringLiteral("application-x-executable"), Qt::magenta},
                                           {QStringLiteral("image-x-generic"), Qt::green}});
    for (const char *name : {"plain", "picture.png", "empty.app", ".hidden"}) {
        ASSERT_TRUE(QDir().mkpath(path(QString::fromLatin1(name))));
        EXPECT_EQ(colorOf(icons.iconForFile(path(QString::fromLatin1(name)))), QColor(Qt::yellow)) << name;
    }
    EXPECT_EQ(colorOf(icons.folderIcon()), QColor(Qt::yellow));
}

TEST_F(WorkspaceIconsTest, AnApplicationBundleIsAProgram)
{
    installTheme(QStringLiteral("theme"), {{QStringLiteral("folder"), Qt::yellow},
                                           {QStringLiteral("application-x-executable"), Qt::magenta}});
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Tool.app/Contents"))));
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("Tool.app")))), QColor(Qt::magenta));
    QIcon::setThemeName(QStringLiteral("no-theme"));
    EXPECT_TRUE(looksLike(icons.iconForFile(path(QStringLiteral("Tool.app"))), icons.folderIcon()));
}

TEST_F(WorkspaceIconsTest, AnExecutableWithoutExtensionIsAScriptOrAProgram)
{
    installTheme(QStringLiteral("theme"), {{QStringLiteral("text-x-script"), Qt::blue},
                                           {QStringLiteral("application-x-executable"), Qt::magenta}});
    write(QStringLiteral("script"), "#!/bin/sh\n", true);
    write(QStringLiteral("program"), "\177ELF", true);
    write(QStringLiteral("nothing"), "", true);
    write(QStringLiteral("notes"), "#!/bin/sh\n");
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("script")))), QColor(Qt::blue));
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("program")))), QColor(Qt::magenta));
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("nothing")))), QColor(Qt::magenta));
    EXPECT_TRUE(looksLike(icons.iconForFile(path(QStringLiteral("notes"))), document()));
    EXPECT_EQ(colorOf(icons.iconForFile(path(QStringLiteral("missing.sh")))), QColor(Qt::blue));
}

TEST_F(WorkspaceIconsTest, APipeIsNotReadFrom)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0700), 0);
    EXPECT_TRUE(looksLike(icons.iconForFile(path(QStringLiteral("pipe"))), document()));
}

TEST_F(WorkspaceIconsTest, WhatProgramsHaveInstalledForEveryThemeIsNoTheme)
{
    const QImage folder = imageOf(icons.folderIcon());
    const QImage file = imageOf(icons.iconForFileType(QStringLiteral("png")));
    installTheme(QStringLiteral("hicolor"),
                 {{QStringLiteral("folder"), Qt::yellow}, {QStringLiteral("image-x-generic"), Qt::green}});
    EXPECT_EQ(imageOf(icons.folderIcon()), folder);
    EXPECT_EQ(imageOf(icons.iconForFileType(QStringLiteral("png"))), file);
}

TEST_F(WorkspaceIconsTest, FollowsAChangeOfTheTheme)
{
    const QColor before = colorOf(icons.iconForFileType(QStringLiteral("png")));
    installTheme(QStringLiteral("first"), {{QStringLiteral("image-x-generic"), Qt::green}});
    ASSERT_NE(before, QColor(Qt::green));
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("png"))), QColor(Qt::green));
    installTheme(QStringLiteral("second"), {{QStringLiteral("image-x-generic"), Qt::red}});
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("png"))), QColor(Qt::red));
    QIcon::setThemeName(QStringLiteral("no-theme"));
    EXPECT_EQ(colorOf(icons.iconForFileType(QStringLiteral("png"))), before);
}

TEST_F(WorkspaceIconsTest, EqualQuestionsGetTheSameIcon)
{
    EXPECT_EQ(icons.iconForFileType(QStringLiteral("png")).cacheKey(),
              icons.iconForFileType(QStringLiteral("png")).cacheKey());
    EXPECT_EQ(icons.tintedIcon(icons.folderIcon(), Qt::red).cacheKey(),
              icons.tintedIcon(icons.folderIcon(), Qt::red).cacheKey());
    EXPECT_NE(icons.tintedIcon(icons.folderIcon(), Qt::red).cacheKey(),
              icons.tintedIcon(icons.folderIcon(), Qt::blue).cacheKey());
    EXPECT_NE(icons.tintedIcon(icons.folderIcon(), Qt::red).cacheKey(),
              icons.tintedIcon(document(), Qt::red).cacheKey());
}

TEST_F(WorkspaceIconsTest, MoreExtensionsThanAreKeptStillShareOneIcon)
{
    constexpr int count = 10000;
    const qint64 key = document().cacheKey();
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(icons.iconForFileType(QStringLiteral("e%1").arg(i)).cacheKey(), key);
    }
}

/// What source-atop at half opacity leaves of each premultiplied channel.
QColor tinted(const QColor &pixel, const QColor &tint)
{
    const auto mix = [](float below, float above) { return above * 0.5F + below * 0.5F; };
    return QColor::fromRgbF(mix(pixel.redF(), tint.redF()), mix(pixel.greenF(), tint.greenF()),
                            mix(pixel.blueF(), tint.blueF()), pixel.alphaF());
}

void expectNear(const QColor &actual, const QColor &expected)
{
    // Of translucent pixels, premultiplied colours keep few bits.
    const int tolerance = expected.alpha() == 255 ? 1 : 4;
    EXPECT_NEAR(actual.alpha(), expected.alpha(), 1);
    EXPECT_NEAR(actual.red(), expected.red(), tolerance);
    EXPECT_NEAR(actual.green(), expected.green(), tolerance);
    EXPECT_NEAR(actual.blue(), expected.blue(), tolerance);
}

/// Opaque on the left, half there in the middle column, empty on the right.
QIcon halfIcon(const QColor &color)
{
    QIcon icon;
    for (const int scale : {1, 2}) {
        QImage image(iconSize * scale, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.fillRect(0, 0, 8 * scale, 16 * scale, color);
        QColor half = color;
        half.setAlpha(128);
        painter.fillRect(8 * scale, 0, scale, 16 * scale, half);
        painter.end();
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return icon;
}

TEST_F(WorkspaceIconsTest, TintsOnlyTheOpaquePixels)
{
    const QColor blue(20, 60, 220);
    const QColor red(230, 40, 10);
    const QIcon icon = icons.tintedIcon(halfIcon(blue), red);
    for (const int scale : {1, 2}) {
        const QImage image = imageOf(icon, scale);
        ASSERT_EQ(image.size(), iconSize * scale);
        for (int y = 0; y < image.height(); ++y) {
            expectNear(image.pixelColor(0, y), tinted(blue, red));
            expectNear(image.pixelColor(8 * scale - 1, y), tinted(blue, red));
            expectNear(image.pixelColor(8 * scale, y),
                       tinted(QColor(blue.red(), blue.green(), blue.blue(), 128), red));
            EXPECT_EQ(image.pixelColor(9 * scale, y).alpha(), 0);
            EXPECT_EQ(image.pixelColor(image.width() - 1, y).alpha(), 0);
        }
    }
}

TEST_F(WorkspaceIconsTest, TheColoursOwnOpacityDoesNotCount)
{
    QColor faint(Qt::red);
    faint.setAlpha(10);
    EXPECT_TRUE(looksLike(icons.tintedIcon(halfIcon(Qt::blue), faint),
                          icons.tintedIcon(halfIcon(Qt::blue), Qt::red)));
}

TEST_F(WorkspaceIconsTest, TintingLeavesTheIconItselfAlone)
{
    const QIcon icon = halfIcon(Qt::blue);
    EXPECT_NE(colorOf(icons.tintedIcon(icon, Qt::red)), QColor(Qt::blue));
    EXPECT_EQ(imageOf(icon).pixelColor(0, 0), QColor(Qt::blue));
}

TEST_F(WorkspaceIconsTest, ATintedIconPaintsItselfAtTheScaleOfTheScreen)
{
    const QIcon icon = icons.tintedIcon(icons.folderIcon(), Qt::red);
    for (const int scale : {1, 2}) {
        QImage screen(iconSize * scale, QImage::Format_ARGB32_Premultiplied);
        screen.setDevicePixelRatio(scale);
        screen.fill(Qt::transparent);
        QPainter painter(&screen);
        icon.paint(&painter, QRect({}, iconSize));
        painter.end();
        screen.setDevicePixelRatio(1);
        QImage expected = imageOf(icon, scale);
        expected.setDevicePixelRatio(1);
        EXPECT_EQ(screen, expected) << scale;
    }
}

TEST_F(WorkspaceIconsTest, ATintedNullIconIsHarmless)
{
    const QIcon icon = icons.tintedIcon(QIcon(), Qt::red);
    EXPECT_TRUE(icon.pixmap(iconSize).isNull());
}

} // namespace
