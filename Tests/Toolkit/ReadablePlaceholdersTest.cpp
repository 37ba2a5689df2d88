// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/ReadablePlaceholders.h"

#include <QLineEdit>
#include <gtest/gtest.h>

namespace {

QPalette paletteOf(const QColor &text, const QColor &ground, const QColor &placeholder)
{
    QPalette palette;
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::PlaceholderText, placeholder);
    return palette;
}

} // namespace

TEST(ReadablePlaceholdersTest, WhatCannotBeReadTakesTheColorOfTheText)
{
    QWidget window;
    QWidget page(&window);
    const QLineEdit field(&page);
    new ReadablePlaceholders(page);
    const QColor halfBlack(0, 0, 0, 128);
    window.setPalette(paletteOf(Qt::black, Qt::white, halfBlack));
    EXPECT_EQ(field.palette().color(QPalette::PlaceholderText), halfBlack) << "it can be read";
    window.setPalette(paletteOf(Qt::white, QColor(27, 30, 32), halfBlack));
    EXPECT_GT(field.palette().color(QPalette::PlaceholderText).lightness(), 200);
    EXPECT_EQ(field.palette().color(QPalette::Base), QColor(27, 30, 32)) << "nothing else changes";
    window.setPalette(paletteOf(Qt::black, Qt::white, halfBlack));
    EXPECT_LT(field.palette().color(QPalette::PlaceholderText).lightness(), 50) << "the desktop turned light";
}
