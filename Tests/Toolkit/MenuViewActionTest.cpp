// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/MenuViewAction.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

/// A menu: an entry, a view with two buttons, then two, then one, another entry.
class MenuViewActionTest : public ::testing::Test
{
protected:
    MenuViewActionTest()
    {
        window.show();
        before = menu.addAction(QStringLiteral("before"));
        auto *view = new QWidget;
        auto *layout = new QHBoxLayout(view);
        label = new QLabel(QStringLiteral("label"));
        layout->addWidget(label);
        MenuViewAction::Rows rows;
        for (const QStringList &row :
             {QStringList{QStringLiteral("a1"), QStringLiteral("a2")},
              QStringList{QStringLiteral("b1"), QStringLiteral("b2")}, QStringList{QStringLiteral("c")}}) {
            rows.append(QList<QWidget *>());
            for (const QString &name : row) {
                auto *button = new QPushButton(name);
                button->setObjectName(name);
                button->setAutoDefault(false);
                layout->addWidget(button);
                rows.last().append(button);
                QObject::connect(button, &QPushButton::clicked, [this, name] { clicked << name; });
            }
        }
        action = new MenuViewAction(view, rows, &menu);
        menu.addAction(action);
        after = menu.addAction(QStringLiteral("after"));
        QObject::connect(&menu, &QMenu::triggered,
                         [this](const QAction *entry) { triggered << entry->text(); });
    }

    void open()
    {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        menu.popup(window.mapToGlobal(QPoint(0, 0)));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    }

    /// Goes where the keyboard of an open menu goes.
    void press(Qt::Key key)
    {
        QWidget *receiver = menu.focusWidget();
        QTest::keyClick(receiver ? receiver : &menu, key);
    }

    QString focused() const
    {
        const QWidget *widget = menu.focusWidget();
        return widget && widget != &menu ? widget->objectName() : QString();
    }

    QWidget &button(const char *name) const { return *menu.findChild<QWidget *>(QString::fromLatin1(name)); }

    QWidget window;
    QMenu menu;
    QAction *before;
    MenuViewAction *action;
    QAction *after;
    QLabel *label;
    QStringList clicked;
    QStringList triggered;
};

TEST_F(MenuViewActionTest, UpAndDownLeadInThroughTheRowsAndOut)
{
    open();
    QStringList way;
    for (int i = 0; i < 5; ++i) {
        press(Qt::Key_Down);
        way << (focused().isEmpty() ? menu.activeAction()->text() : focused());
    }
    EXPECT_EQ(way, QStringList({QStringLiteral("before"), QStringLiteral("a1"), QStringLiteral("b1"),
                                QStringLiteral("c"), QStringLiteral("after")}));
    QStringList wayBack{way.takeLast()};
    for (int i = 0; i < 4; ++i) {
        press(Qt::Key_Up);
        wayBack.prepend(focused().isEmpty() ? menu.activeAction()->text() : focused());
    }
    EXPECT_EQ(wayBack, way << QStringLiteral("after"));
    EXPECT_EQ(focused(), u"");
}

TEST_F(MenuViewActionTest, LeftAndRightStayInTheRow)
{
    open();
    action->enter();
    EXPECT_EQ(focused(), u"a1");
    EXPECT_EQ(menu.activeAction(), action);
    press(Qt::Key_Left);
    EXPECT_EQ(focused(), u"a1");
    press(Qt::Key_Right);
    EXPECT_EQ(focused(), u"a2");
    press(Qt::Key_Right);
    EXPECT_EQ(focused(), u"a2");
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"b2");
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"c");
    EXPECT_TRUE(menu.isVisible());
}

TEST_F(MenuViewActionTest, FromRightToLeftTheArrowsAreSwapped)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open();
    action->enter();
    press(Qt::Key_Left);
    EXPECT_EQ(focused(), u"a2");
    press(Qt::Key_Right);
    EXPECT_EQ(focused(), u"a1");
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(MenuViewActionTest, TabGoesOnToTheNextEntryAndBack)
{
    open();
    action->enter();
    press(Qt::Key_Tab);
    EXPECT_EQ(menu.activeAction(), after);
    EXPECT_EQ(focused(), u"");
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), u"a1");
    press(Qt::Key_Backtab);
    EXPECT_EQ(menu.activeAction(), before);
}

TEST_F(MenuViewActionTest, TabComesByTheStopsOnItsWay)
{
    action->addTabStop(button("c"));
    open();
    action->enter();
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), u"c");
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), u"a1");
    press(Qt::Key_Down);
    press(Qt::Key_Right);
    EXPECT_EQ(focused(), u"b2");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), u"c");
    press(Qt::Key_Tab);
    EXPECT_EQ(menu.activeAction(), after);
    EXPECT_EQ(focused(), u"");
}

TEST_F(MenuViewActionTest, BacktabComesByTheSameStopsAsTabFromTheOtherEnd)
{
    action->addTabStop(button("b1"));
    action->addTabStop(button("c"));
    // The keyboard goes from one such entry straight to another.
    auto *second = new QWidget;
    auto *layout = new QHBoxLayout(second);
    MenuViewAction::Rows rows{{}};
    for (const char *name : {"x", "y"}) {
        rows.last().append(new QPushButton);
        rows.last().last()->setObjectName(QString::fromLatin1(name));
        layout->addWidget(rows.last().last());
    }
    auto *secondAction = new MenuViewAction(second, rows, &menu);
    secondAction->addTabStop(*rows.last().last());
    menu.insertAction(after, secondAction);
    open();
    press(Qt::Key_Tab);
    EXPECT_EQ(menu.activeAction(), before);
    QStringList way;
    for (int i = 0; i < 6; ++i) {
        press(Qt::Key_Tab);
        way << (focused().isEmpty() ? menu.activeAction()->text() : focused());
    }
    EXPECT_EQ(way, QStringList({QStringLiteral("a1"), QStringLiteral("b1"), QStringLiteral("c"),
                                QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("after")}));
    QStringList wayBack{QStringLiteral("after")};
    for (int i = 0; i < 5; ++i) {
        press(Qt::Key_Backtab);
        wayBack.prepend(focused());
    }
    EXPECT_EQ(wayBack, way);
    press(Qt::Key_Backtab);
    EXPECT_EQ(menu.activeAction(), before);
}

TEST_F(MenuViewActionTest, TheEntranceIsWhereTheKeyboardComesIn)
{
    action->setEntrance(button("b2"));
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"b2");
}

TEST_F(MenuViewActionTest, ReturnAndSpacePressTheButtonAndLeaveTheMenuOpen)
{
    open();
    action->enter();
    press(Qt::Key_Return);
    press(Qt::Key_Right);
    press(Qt::Key_Space);
    press(Qt::Key_Enter);
    EXPECT_EQ(clicked, QStringList({QStringLiteral("a1"), QStringLiteral("a2"), QStringLiteral("a2")}));
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(triggered, QStringList());
}

TEST_F(MenuViewActionTest, EscapeClosesTheMenu)
{
    open();
    action->enter();
    press(Qt::Key_Escape);
    EXPECT_FALSE(menu.isVisible());
    EXPECT_EQ(triggered, QStringList());
}

TEST_F(MenuViewActionTest, AClickBesideTheControlsChoosesNothing)
{
    open();
    QTest::mouseClick(label, Qt::LeftButton);
    QTest::mouseClick(action->defaultWidget(), Qt::LeftButton, {}, QPoint(1, 1));
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(triggered, QStringList());
}

TEST_F(MenuViewActionTest, AClickOnAControlMakesTheArrowsGoOnFromThere)
{
    open();
    QTest::mouseClick(&button("c"), Qt::LeftButton);
    EXPECT_EQ(clicked, QStringList{QStringLiteral("c")});
    press(Qt::Key_Down);
    EXPECT_EQ(menu.activeAction(), after);
}

TEST_F(MenuViewActionTest, WhatIsDisabledIsPassedOver)
{
    action->setEnabled(false);
    EXPECT_FALSE(action->defaultWidget()->isEnabled());
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"");
    QTest::mouseClick(&button("a1"), Qt::LeftButton);
    EXPECT_EQ(clicked, QStringList());
    EXPECT_TRUE(menu.isVisible());
}

} // namespace
