// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/RestingSelection.h"

#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QStyleOptionViewItem>
#include <QTest>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

/// A view beside a button, under a palette that is light or dark.
class RestingSelectionTest : public ::testing::TestWithParam<bool>
{
protected:
    RestingSelectionTest()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(&view);
        layout->addWidget(&button);
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            palette.setColor(group, QPalette::Base, GetParam() ? QColor(27, 30, 32) : QColor(Qt::white));
            palette.setColor(group, QPalette::Text, GetParam() ? QColor(252, 252, 252) : QColor(Qt::black));
            palette.setColor(group, QPalette::Highlight, QColor(61, 174, 233));
            palette.setColor(group, QPalette::HighlightedText, QColor(Qt::white));
        }
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    QPalette applied() const
    {
        QStyleOptionViewItem option;
        option.palette = palette;
        RestingSelection::apply(option, view);
        return option.palette;
    }

    /// Of luminances, from 1 to 21.
    static double contrast(const QColor &one, const QColor &other)
    {
        const auto luminance = [](const QColor &color) {
            const auto linear = [](double part) {
                return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
            };
            return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
                   0.0722 * linear(color.blueF());
        };
        const double a = luminance(one) + 0.05;
        const double b = luminance(other) + 0.05;
        return std::max(a, b) / std::min(a, b);
    }

    QPalette palette;
    QWidget window;
    QListWidget view;
    QPushButton button;
};

TEST_P(RestingSelectionTest, StandsBackWhileTheKeyboardIsElsewhereAndStaysReadable)
{
    button.setFocus();
    const QPalette resting = applied();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor selection = resting.color(group, QPalette::Highlight);
        EXPECT_GT(contrast(selection, palette.color(group, QPalette::Highlight)), 1.4);
        EXPECT_GT(contrast(selection, palette.color(group, QPalette::Base)), 1.2);
        EXPECT_GT(contrast(selection, resting.color(group, QPalette::HighlightedText)), 7);
    }
}

TEST_P(RestingSelectionTest, WithTheKeyboardItIsThePalettes)
{
    view.setFocus();
    EXPECT_EQ(applied(), palette);
    // An editor of the view's.
    QLineEdit editor(view.viewport());
    editor.show();
    editor.setFocus();
    EXPECT_EQ(applied(), palette);
}

TEST_P(RestingSelectionTest, AnOpenMenuLeavesItAlone)
{
    view.setFocus();
    QMenu menu;
    menu.addAction(QStringLiteral("entry"));
    menu.popup(window.mapToGlobal(QPoint()));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    EXPECT_EQ(applied(), palette);
}

INSTANTIATE_TEST_SUITE_P(Grounds, RestingSelectionTest, ::testing::Bool(),
                         [](const auto &isDark) { return isDark.param ? "Dark" : "Light"; });

} // namespace
