// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/MenuButton.h"

#include <QMenu>
#include <QStyle>
#include <QStyleFactory>
#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(MenuButtonTest, TheTextStandsApartFromTheArrow)
{
    for (const QString &name : {QStringLiteral("Fusion"), QStringLiteral("Windows")}) {
        const std::unique_ptr<QStyle> style(QStyleFactory::create(name));
        ASSERT_TRUE(style);
        for (const int pointSize : {9, 14, 20}) {
            QMenu menu;
            MenuButton button(QStringLiteral("A text of &usual length"));
            button.setStyle(style.get());
            QFont font = button.font();
            font.setPointSize(pointSize);
            button.setFont(font);
            button.setMenu(&menu);
            const int text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
            const int arrow = style->pixelMetric(QStyle::PM_MenuButtonIndicator, nullptr, &button);
            // The text is in the middle of what the arrow leaves.
            const int beside = (button.sizeHint().width() - arrow - text) / 2;
            EXPECT_GE(beside, 2 * button.fontMetrics().averageCharWidth()) << qPrintable(name) << pointSize;
            EXPECT_EQ(button.minimumSizeHint(), button.sizeHint());
        }
    }
}

TEST(MenuButtonTest, AShortTextTakesNoMoreRoomThanOnOtherButtons)
{
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    QMenu menu;
    QPushButton plain(QStringLiteral("Go"));
    MenuButton button(plain.text());
    for (QPushButton *each : {&plain, static_cast<QPushButton *>(&button)}) {
        each->setStyle(fusion.get());
        each->setMenu(&menu);
    }
    EXPECT_EQ(button.sizeHint(), plain.sizeHint());
}

} // namespace
