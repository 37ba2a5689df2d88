// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QEnterEvent>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <stdexcept>

namespace {

/// Labels and permissions with the keyboard alone.
class QNBPrefPanePrefAttributeActions : public PaneFixture
{
protected:
    void TearDown() override { expectNothingSavedSinceStoring(); }

    void open()
    {
        store({preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("folder/")})});
        openPane();
        outline().setFocus();
    }

    /// Two presets, the first of which is selected, and its first item; their labels.
    QStringList openTwo()
    {
        const QStringList names{QStringLiteral("file"), QStringLiteral("folder/")};
        store({preset(QStringLiteral("A"), names), preset(QStringLiteral("B"), names)});
        openPane();
        outline().selectRow(0);
        return labels();
    }
    QStringList labels() const
    {
        QStringList labels;
        for (int row = 0; row < list().model()->rowCount(); ++row)
            labels.append(list().model()->index(row, 1).data().toString());
        return labels;
    }

    QNBHierarchyItem &item(int row) const
    {
        return *static_cast<QNBHierarchyItem *>(outline().itemAtRow(row).get());
    }

    QString permissions(int row) const
    {
        const QVariantMap digits = item(row).customPermissions();
        QString text;
        for (const QString &key : QNBHierarchyItem::permissionKeys)
            text += digits.value(key).toString();
        return text;
    }

    QMenu &menu() const { return *outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu")); }

    /// To where the keyboard of this process is: the open menu, or the window.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QWidget *window = QApplication::activePopupWidget();
        if (!window)
            window = view.get();
        QWidget *receiver = window->focusWidget();
        QTest::keyClick(receiver ? receiver : window, key, modifiers);
    }

    QString focused() const
    {
        const QWidget *widget = menu().focusWidget();
        return widget && widget != &menu() ? widget->objectName() : QString();
    }

    void expectNothingIsClipped(const QString &name) const
    {
        const auto *place = outlet<QWidget>(name);
        const QList<QWidget *> widgets = place->findChildren<QWidget *>();
        EXPECT_GE(widgets.size(), 10);
        for (const QWidget *widget : widgets) {
            EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << qPrintable(widget->objectName());
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height())
                << qPrintable(widget->objectName());
            EXPECT_TRUE(place->rect().contains(widget->geometry())) << qPrintable(widget->objectName());
        }
    }

    QMenu &submenu(const QString &title) const
    {
        const QList<QAction *> entries = outlet<QMenu>(QStringLiteral("_itemActionsMenu"))->actions();
        for (const QAction *entry : entries) {
            if (entry->menu() && QString(entry->text()).remove(u'&') == title)
                return *entry->menu();
        }
        throw std::out_of_range(title.toStdString());
    }

    static QStringList texts(const QMenu &menu)
    {
        QStringList texts;
        for (const QAction *entry : menu.actions())
            texts << (entry->isSeparator() ? QStringLiteral("-") : QString(entry->text()).remove(u'&'));
        return texts;
    }

    static QStringList checked(const QMenu &menu)
    {
        QStringList texts;
        for (const QAction *entry : menu.actions()) {
            if (entry->isChecked())
                texts << entry->text();
        }
        return texts;
    }
};

TEST_F(QNBPrefPanePrefAttributeActions, CtrlAndADigitSetsTheLabel)
{
    open();
    outline().selectRow(0);
    const QStringList colors{{},
                             QStringLiteral("red"),
                             QStringLiteral("orange"),
                             QStringLiteral("yellow"),
                             QStringLiteral("green"),
                             QStringLiteral("blue"),
                             QStringLiteral("purple"),
                             QStringLiteral("gray")};
    for (int digit = 7; digit >= 0; --digit) {
        press(static_cast<Qt::Key>(Qt::Key_0 + digit), Qt::ControlModifier);
        EXPECT_EQ(item(0).colorName(), colors[digit]);
    }
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(item(0).colorName(), u"red");
    EXPECT_EQ(item(1).colorName(), u"");
}

TEST_F(QNBPrefPanePrefAttributeActions, ShortcutsNeedASelectedItem)
{
    open();
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(item(0).colorName(), u"");
    EXPECT_FALSE(menu().isVisible());
    EXPECT_FALSE(outlet<QAction>(QStringLiteral("_permissionsAction"))->isEnabled());
    for (const QString &title : {QStringLiteral("Label"), QStringLiteral("Permissions")}) {
        for (const QAction *entry : submenu(title).actions())
            EXPECT_TRUE(!entry->isEnabled() || !entry->isCheckable()) << qPrintable(entry->text());
    }
    outline().selectRow(1);
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(item(1).colorName(), u"red");
}

TEST_F(QNBPrefPanePrefAttributeActions, ShortcutsRestWhileANameIsEdited)
{
    const QStringList asStored = openTwo();
    list().setFocus();
    press(Qt::Key_F2);
    ASSERT_TRUE(list().isEditing());
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_I, Qt::ControlModifier);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(item(0).colorName(), u"");
    EXPECT_FALSE(menu().isVisible());
    EXPECT_TRUE(list().isEditing());
    EXPECT_EQ(item(0).filename(), u"file");
    EXPECT_EQ(labels(), asStored);
}

TEST_F(QNBPrefPanePrefAttributeActions, ShortcutsRestWhileTheDescriptionIsTyped)
{
    const QStringList asStored = openTwo();
    outlet<QPlainTextEdit>(QStringLiteral("_ui_presetDescription"))->setFocus();
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_I, Qt::ControlModifier);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(item(0).colorName(), u"");
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(0).filename(), u"file");
    EXPECT_EQ(labels(), asStored);
}

TEST_F(QNBPrefPanePrefAttributeActions, TheLabelMenuNamesColorsShortcutsAndTheCurrentOne)
{
    open();
    item(1).setColorName(QStringLiteral("Blue"));
    outline().selectRow(1);
    const QMenu &labels = submenu(QStringLiteral("Label"));
    EXPECT_EQ(texts(labels),
              QStringList({QStringLiteral("No label"), QStringLiteral("Red"), QStringLiteral("Orange"),
                           QStringLiteral("Yellow"), QStringLiteral("Green"), QStringLiteral("Blue"),
                           QStringLiteral("Purple"), QStringLiteral("Gray")}));
    EXPECT_EQ(checked(labels), QStringList{QStringLiteral("Blue")});
    outline().selectRow(0);
    EXPECT_EQ(checked(labels), QStringList{QStringLiteral("No label")});
    for (int i = 0; i < labels.actions().size(); ++i) {
        EXPECT_EQ(labels.actions().at(i)->shortcut().toString(), QStringLiteral("Ctrl+%1").arg(i));
        EXPECT_EQ(labels.actions().at(i)->icon().isNull(), i == 0);
    }
    labels.actions().at(4)->trigger();
    EXPECT_EQ(item(0).colorName(), u"green");
    EXPECT_EQ(checked(labels), QStringList{QStringLiteral("Green")});
    // Chosen again it stays.
    labels.actions().at(4)->trigger();
    EXPECT_EQ(checked(labels), QStringList{QStringLiteral("Green")});
    pane->undo();
    EXPECT_EQ(checked(labels), QStringList{QStringLiteral("No label")});
    EXPECT_FALSE(outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled());
}

TEST_F(QNBPrefPanePrefAttributeActions, TheLabelMenuShowsTheColorsAsTheButtonsDo)
{
    open();
    for (const QAction *entry : submenu(QStringLiteral("Label")).actions().mid(1)) {
        const QImage swatch = entry->icon().pixmap(48).toImage();
        const auto [dark, light] = *QNBHoverCell::colorForGel(entry->data().toString());
        const int top = swatch.pixelColor(24, 8).lightness();
        const int bottom = swatch.pixelColor(24, 39).lightness();
        EXPECT_LE(std::abs(top - light.lightness()), 6) << qPrintable(entry->text());
        EXPECT_LE(std::abs(bottom - dark.lightness()), 6) << qPrintable(entry->text());
    }
}

TEST_F(QNBPrefPanePrefAttributeActions, ThePermissionsMenuSetsBitsAndAppliesThem)
{
    open();
    outline().selectRow(1);
    const QMenu &entries = submenu(QStringLiteral("Permissions"));
    EXPECT_EQ(texts(entries), QStringList({QStringLiteral("Owner: Read"), QStringLiteral("Owner: Write"),
                                           QStringLiteral("Owner: Execute"), QStringLiteral("Group: Read"),
                                           QStringLiteral("Group: Write"), QStringLiteral("Group: Execute"),
                                           QStringLiteral("Others: Read"), QStringLiteral("Others: Write"),
                                           QStringLiteral("Others: Execute"), QStringLiteral("-"),
                                           QStringLiteral("Apply to Everything Inside")}));
    EXPECT_EQ(checked(entries),
              QStringList({QStringLiteral("Owner: Read"), QStringLiteral("Owner: Write"),
                           QStringLiteral("Owner: Execute"), QStringLiteral("Group: Read"),
                           QStringLiteral("Group: Write"), QStringLiteral("Others: Read")}));
    outline().selectRow(2);
    EXPECT_FALSE(entries.actions().constLast()->isEnabled()) << "a file has nothing inside";
    outline().selectRow(1);
    EXPECT_TRUE(entries.actions().constLast()->isEnabled());
    entries.actions().at(1)->trigger();
    entries.actions().at(8)->trigger();
    EXPECT_EQ(permissions(1), u"565");
    EXPECT_FALSE(outlet<QCheckBox>(QStringLiteral("_ui_permOwnerW"))->isChecked());
    EXPECT_TRUE(outlet<QCheckBox>(QStringLiteral("_ui_permOthersX"))->isChecked());
    EXPECT_EQ(permissions(2), u"764");
    entries.actions().constLast()->trigger();
    EXPECT_EQ(permissions(2), u"565");
    pane->undo();
    pane->undo();
    EXPECT_EQ(permissions(1), u"564");
    EXPECT_EQ(permissions(2), u"764");
    EXPECT_FALSE(checked(entries).contains(QStringLiteral("Others: Execute")));
}

TEST_F(QNBPrefPanePrefAttributeActions, CtrlIOpensTheMenuWithTheKeyboardAtTheColors)
{
    open();
    outline().selectRow(0);
    press(Qt::Key_I, Qt::ControlModifier);
    ASSERT_TRUE(menu().isVisible());
    EXPECT_EQ(focused(), u"_ui_clearColorButton");
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_EQ(focused(), u"_ui_orangeButton");
    press(Qt::Key_Return);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(0).colorName(), u"orange");
    // The current colour is where it begins the next time.
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(focused(), u"_ui_orangeButton");
    press(Qt::Key_Left);
    press(Qt::Key_Space);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(0).colorName(), u"red");
    EXPECT_TRUE(outline().hasFocus());
}

TEST_F(QNBPrefPanePrefAttributeActions, ArrowsGoThroughThePermissionsInTheMenu)
{
    open();
    outline().selectRow(1);
    press(Qt::Key_I, Qt::ControlModifier);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"_ui_permOwnerR");
    press(Qt::Key_Right);
    press(Qt::Key_Space);
    EXPECT_EQ(permissions(1), u"564");
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"_ui_permGroupW");
    press(Qt::Key_Right);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"_ui_permOthersX");
    press(Qt::Key_Return);
    EXPECT_EQ(permissions(1), u"565");
    EXPECT_TRUE(menu().isVisible());
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"_ui_applyPermissionsRecursively");
    press(Qt::Key_Return);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(permissions(2), u"565");
}

TEST_F(QNBPrefPanePrefAttributeActions, TabMovesOnAndEscapeCloses)
{
    open();
    outline().selectRow(1);
    press(Qt::Key_I, Qt::ControlModifier);
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), u"_ui_permOwnerR");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), u"_ui_applyPermissionsRecursively");
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), u"_ui_permOwnerR");
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), u"_ui_clearColorButton");
    press(Qt::Key_Up);
    EXPECT_EQ(menu().focusWidget() == &menu() ? QString() : focused(), u"");
    press(Qt::Key_Escape);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_TRUE(outline().hasFocus());
    EXPECT_EQ(item(1).colorName(), u"");
    EXPECT_EQ(permissions(1), u"764");
}

TEST_F(QNBPrefPanePrefAttributeActions, KeysPassOverTheButtonThatIsOffForAFile)
{
    open();
    outline().selectRow(0);
    press(Qt::Key_I, Qt::ControlModifier);
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), u"") << "the menu's first entry, not a stop in between";
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), u"_ui_permOwnerR");
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"_ui_permOthersR");
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), u"");
    press(Qt::Key_Up);
    EXPECT_EQ(focused(), u"_ui_permOthersR");
}

TEST_F(QNBPrefPanePrefAttributeActions, TabAndBacktabComeByTheSameStopsOfTheMenu)
{
    open();
    item(1).setColorName(QStringLiteral("red"));
    outline().selectRow(1);
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_TRUE(menu().isVisible());
    const auto once = [&](Qt::Key key) {
        QStringList stops;
        do {
            press(key);
            const QWidget *control = menu().focusWidget();
            stops << (control && control != &menu() ? focused() : menu().activeAction()->text());
        } while (stops.size() < 50 && stops.count(stops.constLast()) == 1);
        stops.removeLast();
        return stops;
    };
    QStringList forwards = once(Qt::Key_Tab);
    EXPECT_EQ(forwards.mid(forwards.size() - 3),
              QStringList({QStringLiteral("_ui_redButton"), QStringLiteral("_ui_permOwnerR"),
                           QStringLiteral("_ui_applyPermissionsRecursively")}));
    // It has come around to the first one.
    const QStringList backwards = once(Qt::Key_Backtab);
    std::reverse(forwards.begin(), forwards.end());
    EXPECT_EQ(backwards, forwards);
}

TEST_F(QNBPrefPanePrefAttributeActions, TheMenuKeyOpensTheMenuAndTheArrowsReachTheViews)
{
    open();
    outline().selectRow(0);
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_TRUE(menu().isVisible());
    QStringList reached;
    for (int i = 0; i < 20; ++i) {
        press(Qt::Key_Up);
        reached << focused();
    }
    EXPECT_TRUE(reached.contains(QStringLiteral("_ui_clearColorButton")));
    EXPECT_TRUE(reached.contains(QStringLiteral("_ui_permOwnerR")));
}

TEST_F(QNBPrefPanePrefAttributeActions, TheViewsInTheMenuNeedASelectedItem)
{
    open();
    for (const int row : {OutlineView::noRow, 0, 1}) {
        outline().selectRow(row);
        menu().popup(QPoint());
        const bool isEnabled = row != OutlineView::noRow;
        for (const char *name : {"_ui_redButton", "_ui_clearColorButton", "_ui_permOthersX"})
            EXPECT_EQ(outlet<QWidget>(QString::fromLatin1(name))->isEnabled(), isEnabled) << name << row;
        menu().close();
    }
}

TEST_F(QNBPrefPanePrefAttributeActions, NothingInTheMenuIsClipped)
{
    const QFont before = QApplication::font();
    for (const int pointSize : {9, 14}) {
        QFont font = before;
        font.setPointSize(pointSize);
        QApplication::setFont(font);
        open();
        outline().selectRow(0);
        menu().popup(QPoint());
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu()));
        for (const char *button : {"_ui_redButton", "_ui_purpleButton", "_ui_clearColorButton"}) {
            QEnterEvent enter({}, {}, {});
            QCoreApplication::sendEvent(outlet<QWidget>(QString::fromLatin1(button)), &enter);
            QCoreApplication::sendPostedEvents();
            expectNothingIsClipped(QStringLiteral("_colorRow"));
            expectNothingIsClipped(QStringLiteral("_permissionsGrid"));
        }
        menu().close();
        closePane();
    }
    QApplication::setFont(before);
}

} // namespace
