// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBHoverButton.h"

#include <QEnterEvent>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class Listener final : public QNBHoverButtonDelegate
{
public:
    void colorLabelButtonHovered(QNBHoverButton &sender) override { hovered.append(sender.isHovered()); }
    QList<bool> hovered;
};

class QNBHoverButtonTest : public ::testing::Test
{
protected:
    void enter()
    {
        QEnterEvent event({}, {}, {});
        QCoreApplication::sendEvent(&button, &event);
    }
    void leave()
    {
        QEvent event(QEvent::Leave);
        QCoreApplication::sendEvent(&button, &event);
    }

    Listener listener;
    QNBHoverButton button;
};

TEST_F(QNBHoverButtonTest, ReportsComingAndGoing)
{
    button.setDelegate(&listener);
    enter();
    EXPECT_TRUE(listener.hovered.isEmpty()) << "no hover action is set";
    button.setHoverAction(&QNBHoverButtonDelegate::colorLabelButtonHovered);
    enter();
    leave();
    EXPECT_EQ(listener.hovered, QList<bool>({true, false}));
}

TEST_F(QNBHoverButtonTest, SwitchingOffAlsoEndsHovering)
{
    button.setState(Qt::Checked);
    enter();
    EXPECT_TRUE(button.isHovered());
    button.setStateWithNumber(0);
    EXPECT_EQ(button.state(), Qt::Unchecked);
    EXPECT_FALSE(button.isHovered());
    button.setStateWithNumber(1);
    EXPECT_EQ(button.state(), Qt::Checked);
}

TEST_F(QNBHoverButtonTest, AClickLeavesTheStateToTheOwner)
{
    QSignalSpy clicked(&button, &QAbstractButton::clicked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_EQ(button.state(), Qt::Unchecked);
}

TEST_F(QNBHoverButtonTest, IsCalledByItsColour)
{
    button.setTitle(QStringLiteral("red"));
    EXPECT_EQ(button.accessibleName(), u"Red");
    EXPECT_EQ(button.toolTip(), u"Red");
    button.setTitle({});
    EXPECT_EQ(button.accessibleName(), u"No label");
}

TEST_F(QNBHoverButtonTest, GelsAreFoundWithoutRegardToCase)
{
    const auto red = QNBHoverButton::colorForGel(QStringLiteral("Red"));
    ASSERT_TRUE(red);
    EXPECT_EQ(red, QNBHoverButton::colorForGel(QStringLiteral("red")));
    EXPECT_EQ(red->first, QColor(0xff, 0x4e, 0x45));
    EXPECT_EQ(red->second, QColor(0xff, 0x8f, 0x88));
    EXPECT_FALSE(QNBHoverButton::colorForGel(QStringLiteral("clearColor")));
    EXPECT_FALSE(QNBHoverButton::colorForGel({}));
}

TEST_F(QNBHoverButtonTest, DrawsItsSwatchAndItsHighlight)
{
    const QImage empty = button.grab().toImage();
    button.setTitle(QStringLiteral("green"));
    const QImage green = button.grab().toImage();
    EXPECT_NE(green, empty);
    button.setState(Qt::Checked);
    EXPECT_NE(button.grab().toImage(), green);
    button.setState(Qt::Unchecked);
    EXPECT_EQ(button.grab().toImage(), green);
}

} // namespace
