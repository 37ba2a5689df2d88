// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/FlowLayout.h"

#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>

namespace {

/// Wants 100 by 20.
class Block final : public QWidget
{
public:
    QSize sizeHint() const override { return {100, 20}; }
    QSize minimumSizeHint() const override { return sizeHint(); }
};

class FlowLayoutTest : public ::testing::Test
{
protected:
    FlowLayoutTest()
    {
        row = new FlowLayout(&parent);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(10);
        for (Block &block : blocks)
            row->addWidget(&block);
    }
    ~FlowLayoutTest() override
    {
        for (Block &block : blocks)
            block.setParent(nullptr);
    }

    void layOut(int width)
    {
        parent.resize(width, row->heightForWidth(width));
        row->activate();
        row->setGeometry(parent.rect());
    }

    QWidget parent;
    Block blocks[3];
    FlowLayout *row;
};

TEST_F(FlowLayoutTest, AllStandInOneRowWhereThereIsRoom)
{
    EXPECT_EQ(row->sizeHint(), QSize(320, 20));
    EXPECT_EQ(row->heightForWidth(320), 20);
    layOut(400);
    EXPECT_EQ(blocks[0].geometry(), QRect(0, 0, 100, 20));
    EXPECT_EQ(blocks[2].geometry(), QRect(220, 0, 100, 20));
}

TEST_F(FlowLayoutTest, WhatDoesNotFitGoesOnInTheNextRow)
{
    EXPECT_EQ(row->minimumSize(), QSize(100, 20));
    EXPECT_EQ(row->heightForWidth(319), 50);
    EXPECT_EQ(row->heightForWidth(100), 80);
    layOut(319);
    EXPECT_EQ(blocks[1].geometry(), QRect(110, 0, 100, 20));
    EXPECT_EQ(blocks[2].geometry(), QRect(0, 30, 100, 20));
}

TEST_F(FlowLayoutTest, RightToLeftItBeginsAtTheRight)
{
    parent.setLayoutDirection(Qt::RightToLeft);
    layOut(300);
    EXPECT_EQ(blocks[0].geometry(), QRect(200, 0, 100, 20));
    EXPECT_EQ(blocks[2].geometry(), QRect(200, 30, 100, 20));
}

TEST_F(FlowLayoutTest, WhatIsHiddenTakesNoRoom)
{
    blocks[0].hide();
    EXPECT_EQ(row->sizeHint(), QSize(210, 20));
    layOut(210);
    EXPECT_EQ(blocks[1].geometry(), QRect(0, 0, 100, 20));
}

TEST_F(FlowLayoutTest, TakesWhatItNeedsOfAColumn)
{
    QWidget window;
    auto *column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *rest = new QWidget;
    column->addWidget(rest, 1);
    auto *inColumn = new FlowLayout;
    column->addLayout(inColumn);
    inColumn->setSpacing(0);
    QWidget *last = nullptr;
    for (int i = 0; i < 3; ++i)
        inColumn->addWidget(last = new Block);
    window.resize(250, 300);
    column->activate();
    EXPECT_EQ(rest->height(), 260);
    EXPECT_EQ(last->geometry(), QRect(0, 280, 100, 20));
}

} // namespace
