// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/Launcher.h"

#include "Tests/Session/ChildProcess.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const QString letters = QStringLiteral("Letters");

class LauncherTest : public ::testing::Test
{
protected:
    static QList<QWidget *> windows()
    {
        QList<QWidget *> found;
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (dynamic_cast<LauncherWindow *>(window))
                found.append(window);
        }
        return found;
    }

    int closed_ = 0;
    Launcher launcher_{
        {.create = [](qsizetype, const QString &, const QStringList &) {}, .undo = [] {}, .openPane = [] {}},
        [this] { ++closed_; }};
};

} // namespace

TEST_F(LauncherTest, ItIsOneWindowThatGoesWhenItIsClosed)
{
    launcher_.open({.labels = {letters}}, {});
    EXPECT_TRUE(launcher_.isOpen());
    ASSERT_EQ(windows().size(), 1);
    auto *field = windows().constFirst()->findChild<QLineEdit *>();
    field->setText(QStringLiteral("let"));
    launcher_.open({.labels = {letters}}, {});
    ASSERT_EQ(windows().size(), 1);
    EXPECT_EQ(field->text(), QStringLiteral("let"));
    windows().constFirst()->close();
    EXPECT_FALSE(launcher_.isOpen());
    EXPECT_EQ(closed_, 1);
    launcher_.open({.labels = {letters}}, {});
    EXPECT_TRUE(launcher_.isOpen());
    EXPECT_TRUE(waitUntil([] { return windows().size() == 1; }));
    EXPECT_EQ(windows().constFirst()->findChild<QLineEdit *>()->text(), QString());
    launcher_.close();
    EXPECT_FALSE(launcher_.isOpen());
    launcher_.close();
    EXPECT_EQ(closed_, 2);
}

TEST_F(LauncherTest, CalledAgainForNoFoldersItKeepsTheOneThatIsChosen)
{
    const QString here = QStringLiteral("/some/where");
    const QString there = QStringLiteral("/over/there");
    launcher_.open({.labels = {letters}, .named = {here}, .recent = {there}}, {});
    const auto *places = windows().constFirst()->findChild<QComboBox *>();
    auto *field = windows().constFirst()->findChild<QLineEdit *>();
    field->setText(QStringLiteral("let"));
    launcher_.open({.labels = {letters}, .recent = {there}}, {});
    EXPECT_EQ(places->currentText(), here);
    EXPECT_EQ(field->selectedText(), QStringLiteral("let")) << "to be typed over";
    launcher_.open({.labels = {letters}, .named = {there}}, {});
    EXPECT_EQ(places->currentText(), there);
    windows().constFirst()->close();
    launcher_.open({.labels = {letters}, .recent = {here}}, {});
    EXPECT_TRUE(waitUntil([] { return windows().size() == 1; }));
    EXPECT_EQ(windows().constFirst()->findChild<QComboBox *>()->currentText(), here);
}

TEST_F(LauncherTest, ItIsADialogOfOneWidthWithinTheScreen)
{
    launcher_.open({.labels = {letters}}, {});
    const QWidget &window = *windows().constFirst();
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::Dialog));
    EXPECT_EQ(window.minimumWidth(), window.maximumWidth());
    EXPECT_GT(window.minimumHeight(), 0) << "without a least height it is taken for an ordinary window";
    EXPECT_TRUE(window.screen()->availableGeometry().contains(window.frameGeometry()));
}

TEST_F(LauncherTest, TheEnvironmentIsAsItWasAfterATokenWasUsed)
{
    launcher_.open({.labels = {letters}}, "token");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

TEST(LauncherPlaceTest, ItStandsAtThePointerWithinTheScreen)
{
    const QRect screen(100, 50, 800, 600);
    const QSize size(300, 200);
    EXPECT_EQ(Launcher::placeAt({200, 100}, size, screen), QPoint(200, 100));
    EXPECT_EQ(Launcher::placeAt({850, 640}, size, screen), QPoint(600, 450));
    EXPECT_EQ(Launcher::placeAt({0, 0}, size, screen), QPoint(100, 50));
    EXPECT_EQ(Launcher::placeAt({400, 300}, QSize(1000, 700), screen), QPoint(100, 50));
}
