// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBHoverButton.h"

#include "Toolkit/PlainText.h"

#include <QAccessible>
#include <QApplication>
#include <QEnterEvent>
#include <QHBoxLayout>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

/// Notes down what a button does, in order.
class RecordingButton final : public QNBHoverButton
{
public:
    using QNBHoverButton::QNBHoverButton;
    void setNeedsDisplay() override
    {
        steps << (isHovered() ? QStringLiteral("redraw hovered") : QStringLiteral("redraw"));
        QNBHoverButton::setNeedsDisplay();
    }
    QStringList steps;
};

class QNBHoverButtonTest : public ::testing::Test, public QNBHoverButtonDelegate
{
protected:
    QNBHoverButtonTest()
    {
        auto *layout = new QHBoxLayout(&window);
        layout->addWidget(&button);
        layout->addWidget(&other);
        button.setTitle(QStringLiteral("red"));
        other.setTitle(QStringLiteral("blue"));
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        // The pointer is nowhere near.
        QTest::mouseMove(&window, QPoint(0, 0));
        button.setDelegate(this);
        button.steps.clear();
    }

    void colorLabelButtonHovered(QNBHoverCell &sender) override
    {
        EXPECT_EQ(&sender, &button.cell());
        EXPECT_EQ(&sender.controlView(), &button);
        EXPECT_EQ(sender.title(), u"red");
        button.steps << (sender.isHovered() ? QStringLiteral("notify hovered") : QStringLiteral("notify"));
    }

    void listen() { button.setHoverAction(&QNBHoverButtonDelegate::colorLabelButtonHovered); }
    static void enter(QWidget &widget)
    {
        QEnterEvent event({}, {}, {});
        QCoreApplication::sendEvent(&widget, &event);
    }
    static void leave(QWidget &widget)
    {
        QEvent event(QEvent::Leave);
        QCoreApplication::sendEvent(&widget, &event);
    }
    QStringList takeSteps() { return std::exchange(button.steps, {}); }

    const QStringList entering = {QStringLiteral("redraw hovered"), QStringLiteral("notify hovered")};
    const QStringList leaving = {QStringLiteral("notify"), QStringLiteral("redraw")};

    QWidget window;
    RecordingButton button;
    QNBHoverButton other;
};

TEST_F(QNBHoverButtonTest, EnteringSetsHoveredThenRedrawsThenNotifies)
{
    listen();
    enter(button);
    EXPECT_EQ(takeSteps(), entering);
    EXPECT_TRUE(button.isHovered());
    button.cell().mouseMoved();
    EXPECT_EQ(takeSteps(), entering);
    button.cell().mouseDragged();
    EXPECT_EQ(takeSteps(), entering);
}

TEST_F(QNBHoverButtonTest, LeavingSetsNotHoveredThenNotifiesThenRedraws)
{
    listen();
    enter(button);
    takeSteps();
    leave(button);
    EXPECT_EQ(takeSteps(), leaving);
    EXPECT_FALSE(button.isHovered());
}

TEST_F(QNBHoverButtonTest, WithNoHoverActionSetEnteringAndLeavingOnlyRedraw)
{
    EXPECT_EQ(button.cell().hoverAction(), nullptr);
    enter(button);
    EXPECT_EQ(takeSteps(), QStringList({QStringLiteral("redraw hovered")}));
    leave(button);
    EXPECT_EQ(takeSteps(), QStringList({QStringLiteral("redraw")}));
    button.setDelegate(nullptr);
    listen();
    enter(button);
    leave(button);
    EXPECT_EQ(takeSteps(), QStringList({QStringLiteral("redraw hovered"), QStringLiteral("redraw")}));
}

TEST_F(QNBHoverButtonTest, TheRealPointerIsFollowed)
{
    listen();
    const QPoint centre = button.rect().center();
    QTest::mouseMove(window.windowHandle(), button.mapTo(&window, centre));
    EXPECT_TRUE(button.isHovered());
    QTest::mouseMove(window.windowHandle(), button.mapTo(&window, centre + QPoint(1, 0)));
    EXPECT_TRUE(button.isHovered());
    takeSteps();
    QTest::mouseMove(window.windowHandle(), other.mapTo(&window, centre));
    EXPECT_EQ(takeSteps(), leaving);
    EXPECT_TRUE(other.isHovered());
}

TEST_F(QNBHoverButtonTest, AMoveOfThePointerInsideIsHoveringAgainAfterSwitchingOff)
{
    const QPoint centre = button.mapTo(&window, button.rect().center());
    QTest::mouseMove(window.windowHandle(), centre);
    button.setState(Qt::Unchecked);
    ASSERT_FALSE(button.isHovered());
    listen();
    takeSteps();
    QTest::mouseMove(window.windowHandle(), centre + QPoint(1, 0));
    EXPECT_EQ(takeSteps(), entering) << "no mouse button is needed for it";
}

TEST_F(QNBHoverButtonTest, ADragIsHoveringOnlyOverTheButton)
{
    listen();
    const QPoint centre = button.mapTo(&window, button.rect().center());
    QWindow *handle = window.windowHandle();
    QTest::mouseMove(handle, centre);
    QTest::mousePress(handle, Qt::LeftButton, {}, centre);
    takeSteps();
    QTest::mouseMove(handle, centre + QPoint(1, 1));
    EXPECT_EQ(takeSteps().mid(0, 2), entering);
    QTest::mouseMove(handle, QPoint(1, 1));
    EXPECT_FALSE(button.isHovered());
    QTest::mouseMove(handle, centre);
    EXPECT_TRUE(button.isHovered());
    QTest::mouseRelease(handle, Qt::LeftButton, {}, centre);
}

TEST_F(QNBHoverButtonTest, AButtonThatGoesIsLeft)
{
    listen();
    enter(button);
    takeSteps();
    button.hide();
    EXPECT_EQ(takeSteps().mid(0, 2), leaving) << "then the keyboard leaves it too";
    button.show();
    enter(button);
    takeSteps();
    button.setEnabled(false);
    EXPECT_EQ(takeSteps().mid(0, 2), leaving);
    enter(button);
    EXPECT_FALSE(button.isHovered()) << "what is disabled does not light up";
}

TEST_F(QNBHoverButtonTest, SwitchingOffAlsoEndsHovering)
{
    button.setState(Qt::Checked);
    enter(button);
    EXPECT_TRUE(button.isHovered());
    button.setStateWithNumber(0);
    EXPECT_EQ(button.state(), Qt::Unchecked);
    EXPECT_FALSE(button.isHovered());
    enter(button);
    button.setStateWithNumber(1);
    EXPECT_EQ(button.state(), Qt::Checked);
    EXPECT_TRUE(button.isHovered());
}

TEST_F(QNBHoverButtonTest, AClickLeavesTheStateToTheOwner)
{
    QSignalSpy clicked(&button, &QAbstractButton::clicked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_EQ(button.state(), Qt::Unchecked);
    EXPECT_FALSE(button.isChecked());
}

TEST_F(QNBHoverButtonTest, SpaceAndReturnClick)
{
    QSignalSpy clicked(&button, &QAbstractButton::clicked);
    button.setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
        QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_EQ(clicked.count(), 3);
}

TEST_F(QNBHoverButtonTest, TabReachesIt)
{
    button.setFocus();
    QTest::keyClick(&button, Qt::Key_Tab);
    EXPECT_TRUE(other.hasFocus());
}

TEST_F(QNBHoverButtonTest, IsCalledByItsColour)
{
    EXPECT_EQ(button.accessibleName(), u"Red");
    EXPECT_EQ(button.toolTip(), PlainText::toolTip(QStringLiteral("Red")));
    button.setTitle({});
    EXPECT_EQ(button.accessibleName(), u"No label");
    EXPECT_EQ(button.toolTip(), PlainText::toolTip(QStringLiteral("No label")));
}

TEST_F(QNBHoverButtonTest, AssistiveTechnologySeesWhetherItIsOn)
{
    const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&button);
    ASSERT_TRUE(interface);
    EXPECT_EQ(interface->text(QAccessible::Name), u"Red");
    EXPECT_TRUE(interface->state().checkable);
    EXPECT_FALSE(interface->state().checked);
    button.setState(Qt::Checked);
    EXPECT_TRUE(interface->state().checked);
    button.setStateWithNumber(0);
    EXPECT_FALSE(interface->state().checked);
}

TEST_F(QNBHoverButtonTest, TheFaceStandsInTheMiddleWithNothingAround)
{
    const QImage image = button.grab().toImage();
    ASSERT_EQ(image.size(), button.sizeHint());
    const QColor ground(253, 253, 253);
    EXPECT_EQ(image.pixelColor(2, 2), ground);
    EXPECT_EQ(image.pixelColor(19, 17), ground);
    EXPECT_EQ(image.pixelColor(1, 1), button.palette().color(QPalette::Window));
    EXPECT_EQ(image.pixelColor(20, 18), button.palette().color(QPalette::Window));
}

TEST_F(QNBHoverButtonTest, TheRingIsSeenByThoseWhoUseTheKeyboardAndHidesNothing)
{
    const QRect face(QPoint(2, 2), QNBHoverCell::size);
    const QImage plain = button.grab().toImage();
    const QImage plainFace = button.grab(face).toImage();
    QTest::mouseClick(&button, Qt::LeftButton);
    button.setFocus(Qt::MouseFocusReason);
    leave(button);
    ASSERT_TRUE(button.hasFocus());
    EXPECT_EQ(button.grab().toImage(), plain);
    other.setFocus();
    button.setFocus(Qt::TabFocusReason);
    const QImage ringed = button.grab().toImage();
    EXPECT_NE(ringed, plain);
    EXPECT_EQ(ringed.pixelColor(11, 0), button.palette().color(QPalette::Highlight));
    EXPECT_EQ(button.grab(face).toImage(), plainFace);
    other.setFocus();
    EXPECT_EQ(button.grab().toImage(), plain);
}

} // namespace
