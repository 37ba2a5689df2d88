// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Toolkit/PlainText.h"
#include "Toolkit/TemplateImages.h"

#include <QAction>
#include <QEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

namespace {

const QStringList buttonNames{QStringLiteral("red"),   QStringLiteral("orange"),    QStringLiteral("yellow"),
                              QStringLiteral("green"), QStringLiteral("blue"),      QStringLiteral("purple"),
                              QStringLiteral("gray"),  QStringLiteral("clearColor")};

class QNBPrefPanePrefColorLabels : public PaneFixture
{
protected:
    void TearDown() override { expectNothingSavedSinceStoring(); }

    /// A preset with one file for each of \a colors.
    void openWithColors(const QStringList &colors)
    {
        QStringList files;
        for (const QString &color : colors)
            files << QStringLiteral("file labelled ") + color;
        const QNBPresetRecordPtr record = preset(QStringLiteral("A"), files);
        for (qsizetype i = 0; i < colors.size(); ++i)
            record->fileHierarchy()->childAtIndex(static_cast<int>(i))->setColorName(colors[i]);
        store({record});
        openPane();
    }

    QNBHoverButton &button(const QString &name) const
    {
        return *outlet<QNBHoverButton>(QStringLiteral("_ui_%1Button").arg(name));
    }

    /// The names of the buttons that are on.
    QStringList lit() const
    {
        QStringList names;
        for (const QString &name : buttonNames) {
            if (button(name).state() == Qt::Checked)
                names << name;
        }
        return names;
    }

    QNBHierarchyItem &item(int row) const
    {
        return *static_cast<QNBHierarchyItem *>(outline().itemAtRow(row).get());
    }

    void enter(const QString &name) const
    {
        QEnterEvent enter({}, {}, {});
        QCoreApplication::sendEvent(&button(name), &enter);
    }

    void leave(const QString &name) const
    {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&button(name), &leave);
    }

    QMenu &menu() const { return *outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu")); }

    void openMenu() const
    {
        menu().popup(outline().viewport()->mapToGlobal(QPoint(5, 5)));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu()));
    }

    QString stepToUndo() const { return outlet<QAction>(QStringLiteral("_undoAction"))->text(); }
    QString spokenLabel() const
    {
        return outlet<QWidget>(QStringLiteral("_colorRow"))->accessibleDescription();
    }
    QString colorName() const { return outlet<QLabel>(QStringLiteral("_ui_hoveredColor"))->text(); }
};

TEST_F(QNBPrefPanePrefColorLabels, SelectingAnItemLightsItsButtonAndShowsTheName)
{
    openWithColors({QStringLiteral("red"), QStringLiteral("gray"), {}});
    EXPECT_EQ(lit(), QStringList());
    outline().selectRow(0);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("red")});
    EXPECT_EQ(colorName(), u"“Red”");
    outline().selectRow(1);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("gray")});
    EXPECT_EQ(colorName(), u"“Gray”");
    outline().selectRow(2);
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
    outline().selectRow(1);
    outline().selectRow(OutlineView::noRow);
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, ACapitalisedColorNameLightsItsButton)
{
    openWithColors({QStringLiteral("Red")});
    outline().selectRow(0);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("red")});
    EXPECT_EQ(colorName(), u"“Red”");
}

TEST_F(QNBPrefPanePrefColorLabels, AnUnknownColorLightsNoButton)
{
    openWithColors({QStringLiteral("blue"), QStringLiteral("crimson"), QStringLiteral("clearColor"),
                    QStringLiteral("startStop")});
    for (int row = 1; row < outline().numberOfRows(); ++row) {
        outline().selectRow(0);
        outline().selectRow(row);
        EXPECT_EQ(lit(), QStringList()) << row;
        EXPECT_EQ(colorName(), u"") << row;
        enter(QStringLiteral("red"));
        leave(QStringLiteral("red"));
        EXPECT_EQ(colorName(), u"") << row;
    }
}

TEST_F(QNBPrefPanePrefColorLabels, TheButtonWithTheKeyboardIsNamed)
{
    openWithColors({QStringLiteral("green")});
    outline().selectRow(0);
    outlet<QAction>(QStringLiteral("_permissionsAction"))->trigger();
    ASSERT_TRUE(button(QStringLiteral("green")).hasFocus());
    EXPECT_EQ(colorName(), u"“Green”");
    QTest::keyClick(&button(QStringLiteral("green")), Qt::Key_Left);
    EXPECT_EQ(colorName(), u"“Yellow”");
    enter(QStringLiteral("purple"));
    EXPECT_EQ(colorName(), u"“Purple”");
    leave(QStringLiteral("purple"));
    EXPECT_EQ(colorName(), u"“Yellow”") << "the keyboard is still there";
    outlet<QWidget>(QStringLiteral("_ui_permOwnerR"))->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(colorName(), u"“Green”");
    button(QStringLiteral("clearColor")).setFocus(Qt::TabFocusReason);
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, ThePaneToldOfAButtonSetsTheColorLightsItAndClosesTheMenu)
{
    openWithColors({{}, QStringLiteral("red")});
    outline().selectRow(0);
    for (const QString &name : buttonNames.first(7)) {
        menu().popup(QPoint());
        pane->colorLabelButtonClicked(button(name));
        EXPECT_EQ(item(0).colorName(), name);
        EXPECT_EQ(lit(), QStringList{name});
        EXPECT_FALSE(menu().isVisible());
    }
    EXPECT_EQ(item(1).colorName(), u"red");
}

TEST_F(QNBPrefPanePrefColorLabels, ThePaneToldOfTheNoLabelButtonStoresNothingLightsNoneAndEmptiesTheName)
{
    openWithColors({QStringLiteral("red")});
    outline().selectRow(0);
    EXPECT_EQ(colorName(), u"“Red”");
    pane->colorLabelButtonClicked(button(QStringLiteral("clearColor")));
    EXPECT_EQ(item(0).colorName(), u"");
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, HoveringAButtonShowsItsName)
{
    openWithColors({QStringLiteral("blue")});
    outline().selectRow(0);
    for (const QString &name : buttonNames.first(7)) {
        enter(name);
        EXPECT_EQ(colorName(), QStringLiteral("“%1%2”").arg(name.at(0).toUpper()).arg(name.mid(1)));
    }
}

TEST_F(QNBPrefPanePrefColorLabels, LeavingAButtonShowsTheItemsOwnColorAgainOrNothing)
{
    openWithColors({QStringLiteral("BLUE"), {}});
    outline().selectRow(0);
    enter(QStringLiteral("red"));
    EXPECT_EQ(colorName(), u"“Red”");
    leave(QStringLiteral("red"));
    EXPECT_EQ(colorName(), u"“Blue”");
    outline().selectRow(1);
    enter(QStringLiteral("red"));
    EXPECT_EQ(colorName(), u"“Red”");
    leave(QStringLiteral("red"));
    EXPECT_EQ(colorName(), u"");
    outline().selectRow(OutlineView::noRow);
    enter(QStringLiteral("red"));
    leave(QStringLiteral("red"));
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, HoveringTheNoLabelButtonEmptiesTheName)
{
    openWithColors({QStringLiteral("blue")});
    outline().selectRow(0);
    EXPECT_EQ(colorName(), u"“Blue”");
    enter(QStringLiteral("clearColor"));
    EXPECT_EQ(colorName(), u"");
    // The sender has no title: nothing is shown for it, not even when the pointer leaves.
    leave(QStringLiteral("clearColor"));
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, AClickInTheOpenMenuIsOneStepThatCanBeTakenBack)
{
    openWithColors({QStringLiteral("green"), {}});
    outline().selectRow(0);
    openMenu();
    QSignalSpy rows(outline().model(), &QAbstractItemModel::dataChanged);
    QTest::mouseClick(&button(QStringLiteral("purple")), Qt::LeftButton);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(0).colorName(), u"purple");
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.constFirst().constFirst().toModelIndex().row(), 0);
    EXPECT_TRUE(stepToUndo().endsWith(u" Label"));

    outline().selectRow(1);
    pane->undo();
    EXPECT_EQ(item(0).colorName(), u"green");
    EXPECT_EQ(outline().selectedRow(), 0);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("green")});
    EXPECT_EQ(colorName(), u"“Green”");
    pane->redo();
    EXPECT_EQ(item(0).colorName(), u"purple");
    EXPECT_EQ(lit(), QStringList{QStringLiteral("purple")});
    EXPECT_EQ(rows.size(), 3);
}

TEST_F(QNBPrefPanePrefColorLabels, EachButtonInTheOpenMenuGivesItsColor)
{
    openWithColors({{}});
    outline().selectRow(0);
    for (const QString &name : buttonNames.first(7)) {
        openMenu();
        QTest::mouseClick(&button(name), Qt::LeftButton);
        EXPECT_EQ(item(0).colorName(), name);
        menu().close();
    }
}

TEST_F(QNBPrefPanePrefColorLabels, TheNoLabelButtonShowsABlackCross)
{
    openPane();
    const QImage image = button(QStringLiteral("clearColor")).icon().pixmap(48).toImage();
    ASSERT_EQ(image.size(), QSize(48, 48));
    EXPECT_EQ(image, TemplateImages::stopProgress(Qt::black).pixmap(48).toImage());
    for (const QPoint &onTheCross :
         {QPoint(24, 24), QPoint(10, 10), QPoint(37, 10), QPoint(10, 37), QPoint(37, 37)})
        EXPECT_EQ(image.pixelColor(onTheCross), QColor(Qt::black))
            << onTheCross.x() << ", " << onTheCross.y();
    for (const QPoint &beside : {QPoint(24, 8), QPoint(24, 40), QPoint(8, 24), QPoint(40, 24)})
        EXPECT_EQ(image.pixelColor(beside).alpha(), 0) << beside.x() << ", " << beside.y();
}

TEST_F(QNBPrefPanePrefColorLabels, EachWordOfTheNameIsCapitalised)
{
    openWithColors({{}});
    QNBHoverButton other;
    other.setTitle(QStringLiteral("deep SKY blue"));
    other.cell().setIsHovered(true);
    pane->colorLabelButtonHovered(other.cell());
    EXPECT_EQ(colorName(), u"“Deep Sky Blue”");
}

TEST_F(QNBPrefPanePrefColorLabels, AClickOnNoLabelInTheOpenMenuTakesTheColorAway)
{
    openWithColors({QStringLiteral("Red")});
    QTest::keyClick(&outline(), Qt::Key_Home);
    openMenu();
    EXPECT_EQ(lit(), QStringList{QStringLiteral("red")});
    EXPECT_EQ(colorName(), u"“Red”");
    QTest::mouseClick(&button(QStringLiteral("clearColor")), Qt::LeftButton);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(0).colorName(), u"");
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, TheColorThatIsThereAlreadyIsNoStep)
{
    openWithColors({QStringLiteral("green"), {}});
    outline().selectRow(0);
    menu().popup(QPoint());
    pane->colorLabelButtonClicked(button(QStringLiteral("green")));
    EXPECT_FALSE(menu().isVisible());
    outline().selectRow(1);
    pane->colorLabelButtonClicked(button(QStringLiteral("clearColor")));
    EXPECT_FALSE(outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled());
}

TEST_F(QNBPrefPanePrefColorLabels, WithoutASelectionAClickDoesNothing)
{
    openWithColors({QStringLiteral("green")});
    pane->colorLabelButtonClicked(button(QStringLiteral("red")));
    EXPECT_EQ(item(0).colorName(), u"green");
    EXPECT_EQ(lit(), QStringList());
    EXPECT_FALSE(outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled());
}

TEST_F(QNBPrefPanePrefColorLabels, TheRowAndItsButtonsTellTheColorInWords)
{
    openWithColors({QStringLiteral("gray"), {}, QStringLiteral("crimson")});
    EXPECT_EQ(button(QStringLiteral("orange")).accessibleName(), u"Orange");
    EXPECT_EQ(button(QStringLiteral("orange")).toolTip(), PlainText::toolTip(QStringLiteral("Orange")));
    EXPECT_EQ(button(QStringLiteral("clearColor")).accessibleName(), u"No label");
    EXPECT_EQ(button(QStringLiteral("clearColor")).toolTip(), PlainText::toolTip(QStringLiteral("No label")));
    outline().selectRow(0);
    EXPECT_EQ(spokenLabel(), u"Gray");
    outline().selectRow(1);
    EXPECT_EQ(spokenLabel(), u"No label");
    outline().selectRow(0);
    outline().selectRow(2);
    EXPECT_EQ(spokenLabel(), u"No label");
    pane->colorLabelButtonClicked(button(QStringLiteral("yellow")));
    EXPECT_EQ(spokenLabel(), u"Yellow");
}

/// Writes down every title that a colour button is given, as its tool tip tells it.
class TitleRecorder final : public QObject
{
public:
    TitleRecorder() { QCoreApplication::instance()->installEventFilter(this); }

    QStringList titles;
    QStringList iconlessWithoutTitle;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *button = dynamic_cast<const QNBHoverButton *>(watched);
        if (button && event->type() == QEvent::ToolTipChange && !button->objectName().isEmpty()) {
            titles
                << button->objectName() + QStringLiteral(": ") +
                       button->toolTip().remove(QStringLiteral("<span>")).remove(QStringLiteral("</span>"));
            if (button->title().isEmpty() && button->icon().isNull())
                iconlessWithoutTitle << button->objectName();
        }
        return false;
    }
};

TEST_F(QNBPrefPanePrefColorLabels, ButtonsAreSetUpInOrderAndTheNoLabelButtonGetsItsImageThenItsTitle)
{
    TitleRecorder recorder;
    openPane();
    EXPECT_EQ(recorder.titles,
              QStringList({QStringLiteral("_ui_redButton: Red"), QStringLiteral("_ui_orangeButton: Orange"),
                           QStringLiteral("_ui_yellowButton: Yellow"),
                           QStringLiteral("_ui_greenButton: Green"), QStringLiteral("_ui_blueButton: Blue"),
                           QStringLiteral("_ui_purpleButton: Purple"), QStringLiteral("_ui_grayButton: Gray"),
                           QStringLiteral("_ui_clearColorButton: clearColor"),
                           QStringLiteral("_ui_clearColorButton: No label")}));
    EXPECT_EQ(recorder.iconlessWithoutTitle, QStringList());
}

} // namespace
