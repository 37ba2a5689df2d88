// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/LauncherWindow.h"

#include <QAccessible>
#include <QComboBox>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString lettersPreset = QStringLiteral("Letters");
const QString photos = QStringLiteral("Photos");
const QString phone = QStringLiteral("Phone");
const QString here = QStringLiteral("/some/where");
const QString there = QStringLiteral("/over/there");

class LauncherWindowTest : public ::testing::Test
{
protected:
    LauncherWindowTest()
        : window_({.create =
                       [this](qsizetype place, const QString &label, const QStringList &folders) {
                           created_.append(label + QStringLiteral(" %1 in ").arg(place) +
                                           folders.join(QStringLiteral(", ")));
                       },
                   .undo = [this] { ++undone_; },
                   .openPane = [this] { ++panes_; }})
    {
        window_.setPresets({lettersPreset, photos, phone});
        window_.setPlaces({}, {here, there});
        window_.beginTyping();
        show();
    }

    void show()
    {
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    QLineEdit &field() const { return *window_.findChild<QLineEdit *>(); }
    QListView &list() const { return *window_.findChild<QListView *>(QString(), Qt::FindDirectChildrenOnly); }
    QComboBox &places() const { return *window_.findChild<QComboBox *>(); }
    QPushButton &button(const QString &text) const
    {
        const QList<QPushButton *> buttons = window_.findChildren<QPushButton *>();
        const auto found = std::find_if(buttons.begin(), buttons.end(),
                                        [&](const QPushButton *button) { return button->text() == text; });
        EXPECT_NE(found, buttons.end()) << qPrintable(text);
        return **found;
    }
    QString chosen() const { return list().currentIndex().data().toString(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window_.focusWidget(), key, modifiers);
    }
    void type(const char *text) { QTest::keyClicks(window_.focusWidget(), QString::fromLatin1(text)); }

    QStringList created_;
    int undone_ = 0;
    int panes_ = 0;
    LauncherWindow window_;
};

} // namespace

TEST_F(LauncherWindowTest, ReturnCreatesTheBestMatchInTheFirstPlace)
{
    type("pho");
    EXPECT_EQ(chosen(), photos);
    EXPECT_THAT(created_, IsEmpty());
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Photos 1 in /some/where")));
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(LauncherWindowTest, ArrowsMoveInTheListWhileTheKeyboardIsInTheField)
{
    EXPECT_EQ(chosen(), lettersPreset);
    press(Qt::Key_Down);
    EXPECT_EQ(chosen(), photos);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(chosen(), phone);
    press(Qt::Key_Up);
    EXPECT_EQ(chosen(), photos);
    press(Qt::Key_PageUp);
    EXPECT_EQ(chosen(), lettersPreset);
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(chosen(), phone);
    EXPECT_TRUE(field().hasFocus());
    type("let");
    EXPECT_EQ(chosen(), lettersPreset);
    press(Qt::Key_Home);
    type("x");
    EXPECT_EQ(field().text(), QStringLiteral("xlet")) << "Home alone moves in the field";
}

TEST_F(LauncherWindowTest, EscapeClosesAndCreatesNothing)
{
    press(Qt::Key_Escape);
    EXPECT_FALSE(window_.isVisible());
    EXPECT_THAT(created_, IsEmpty());
}

TEST_F(LauncherWindowTest, TheLastCreationIsUndoneIfThereIsOne)
{
    const QString undo = QStringLiteral("&Undo Last Creation");
    EXPECT_FALSE(button(undo).isEnabled());
    window_.setCanUndo(true);
    QTest::keyClick(&window_, Qt::Key_U, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window_.isVisible(); }))
        << "the button is seen pressed first";
    EXPECT_EQ(undone_, 1);
    EXPECT_THAT(created_, IsEmpty());
}

TEST_F(LauncherWindowTest, ReturnInTheListAndADoubleClickCreateOnce)
{
    list().setFocus();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Photos 1 in /some/where")));
    window_.show();
    const QPoint row = list().visualRect(list().model()->index(2, 0)).center();
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, row);
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(created_.size(), 2);
    EXPECT_EQ(created_.constLast(), QStringLiteral("Phone 2 in /some/where"));
}

TEST_F(LauncherWindowTest, APlaceIsChosenByTheKeyboard)
{
    QTest::keyClick(&window_, Qt::Key_I, Qt::AltModifier);
    ASSERT_TRUE(places().hasFocus());
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Letters 0 in /over/there")));
}

TEST_F(LauncherWindowTest, ThePlaceThatIsNamedComesFirstAndOnce)
{
    window_.setPlaces({there}, {here, there});
    EXPECT_EQ(places().count(), 2);
    EXPECT_EQ(places().currentText(), there);
    window_.setPlaces({there, here}, {here});
    EXPECT_EQ(places().currentText(), QStringLiteral("2 folders: there, where"));
    EXPECT_EQ(places().count(), 2);
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Letters 0 in /over/there, /some/where")));
}

TEST_F(LauncherWindowTest, APathIsReadFromLeftToRightAmongWordsThatAreNot)
{
    window_.setLayoutDirection(Qt::RightToLeft);
    window_.setPlaces({here}, {});
    EXPECT_EQ(places().currentText(), QChar(0x2066) + here + QChar(0x2069));
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Letters 0 in /some/where")));
}

TEST_F(LauncherWindowTest, WithoutAPlaceOneIsAskedForFirst)
{
    const QTemporaryDir folder;
    window_.setPlaces({}, {});
    EXPECT_FALSE(places().isEnabled());
    EXPECT_TRUE(button(QStringLiteral("&Create…")).isEnabled());
    press(Qt::Key_Return);
    auto *dialog = window_.findChild<QFileDialog *>();
    ASSERT_TRUE(dialog);
    EXPECT_THAT(created_, IsEmpty());
    dialog->reject();
    EXPECT_TRUE(window_.isVisible());
    EXPECT_THAT(created_, IsEmpty());

    press(Qt::Key_Return);
    const QList<QFileDialog *> dialogs = window_.findChildren<QFileDialog *>();
    dialog = dialogs.constLast();
    Q_EMIT dialog->fileSelected(folder.path());
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Letters 0 in ") + folder.path()));
}

TEST_F(LauncherWindowTest, AChosenFolderIsAPlaceAndCreatesNothingByItself)
{
    button(QStringLiteral("C&hoose…")).click();
    auto *dialog = window_.findChild<QFileDialog *>();
    ASSERT_TRUE(dialog);
    Q_EMIT dialog->fileSelected(QStringLiteral("/some/new/"));
    EXPECT_EQ(places().currentText(), QStringLiteral("/some/new"));
    Q_EMIT dialog->fileSelected(there);
    EXPECT_EQ(places().currentText(), there);
    EXPECT_EQ(places().count(), 3) << "one that is there already is not added";
    EXPECT_THAT(created_, IsEmpty());
}

TEST_F(LauncherWindowTest, PresetsThatChangeAreShownAndTheChoiceStays)
{
    press(Qt::Key_Down);
    ASSERT_EQ(chosen(), photos);
    window_.setPresets({phone, lettersPreset, QStringLiteral("More"), photos});
    EXPECT_EQ(chosen(), photos);
    EXPECT_EQ(list().model()->rowCount(), 4);
    type("more");
    window_.setPresets({phone, lettersPreset});
    EXPECT_EQ(chosen(), QString());
    window_.setPresets({phone, QStringLiteral("More")});
    EXPECT_EQ(chosen(), QStringLiteral("More")) << "what is typed stays";
}

TEST_F(LauncherWindowTest, InPlaceOfAChosenPresetThatGoesNoOtherIsChosen)
{
    press(Qt::Key_Down);
    ASSERT_EQ(chosen(), photos);
    window_.setPresets({phone, lettersPreset});
    EXPECT_EQ(chosen(), QString());
    EXPECT_EQ(field().accessibleDescription(), QStringLiteral("The chosen preset is not there any more."));
    window_.setPresets({lettersPreset, phone});
    press(Qt::Key_Return);
    EXPECT_THAT(created_, IsEmpty());
    EXPECT_TRUE(window_.isVisible());
    press(Qt::Key_Down);
    EXPECT_EQ(chosen(), lettersPreset);
}

TEST_F(LauncherWindowTest, WhatIsCreatedIsWhatWasChosenBeforeTheFolderWasAskedFor)
{
    window_.setPlaces({}, {});
    type("pho");
    ASSERT_EQ(chosen(), photos);
    press(Qt::Key_Return);
    auto *dialog = window_.findChild<QFileDialog *>();
    ASSERT_TRUE(dialog);
    window_.setPresets({lettersPreset, phone});
    Q_EMIT dialog->fileSelected(here);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Photos 1 in /some/where")));
}

TEST_F(LauncherWindowTest, ReturnOnAButtonIsForThatButton)
{
    button(QStringLiteral("C&hoose…")).setFocus();
    press(Qt::Key_Return);
    auto *dialog = window_.findChild<QFileDialog *>();
    EXPECT_TRUE(dialog);
    EXPECT_THAT(created_, IsEmpty());
    delete dialog;
    show();
    field().setFocus();
    press(Qt::Key_Return);
    EXPECT_THAT(created_, ElementsAre(QStringLiteral("Letters 0 in /some/where")));
    show();
    button(QStringLiteral("&Open Quenby…")).setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(panes_, 1);
    EXPECT_EQ(created_.size(), 1);
}

TEST_F(LauncherWindowTest, WhereThereIsNothingToChooseItSaysWhy)
{
    const auto reason = [this] { return list().accessibleDescription(); };
    type("xyz");
    EXPECT_EQ(reason(), QStringLiteral("No preset has that in its name."));
    EXPECT_FALSE(button(QStringLiteral("&Create")).isEnabled());
    press(Qt::Key_Return);
    EXPECT_THAT(created_, IsEmpty());
    EXPECT_TRUE(window_.isVisible());
    window_.setPresets({});
    EXPECT_EQ(reason(), QStringLiteral("There are no presets. Design them in Quenby."));
    window_.setPresets({}, QStringLiteral("no permission"));
    EXPECT_EQ(reason(), QStringLiteral("The presets cannot be read: no permission"));
    field().clear();
    // What was known stays useful.
    window_.setPresets({lettersPreset}, QStringLiteral("no permission"));
    EXPECT_EQ(reason(), QString());
    EXPECT_EQ(chosen(), lettersPreset);
    button(QStringLiteral("&Open Quenby…")).click();
    EXPECT_EQ(panes_, 1);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(LauncherWindowTest, WhoDoesNotSeeItHearsTheChoice)
{
    EXPECT_EQ(field().accessibleDescription(), lettersPreset);
    press(Qt::Key_Down);
    EXPECT_EQ(field().accessibleDescription(), photos);
    type("xyz");
    EXPECT_EQ(field().accessibleDescription(), QStringLiteral("No preset has that in its name."));
    QStringList names;
    for (QWidget *widget : window_.findChildren<QWidget *>()) {
        if (widget->focusPolicy() != Qt::NoFocus && widget->isVisible() && widget->parentWidget() != &field())
            names.append(QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name));
    }
    EXPECT_FALSE(names.contains(QString()));
    names.removeDuplicates();
    EXPECT_GE(names.size(), 6);
}

TEST_F(LauncherWindowTest, WhatIsTooLongToBeShownIsInAToolTip)
{
    EXPECT_EQ(list().textElideMode(), Qt::ElideMiddle) << "labels differ at their ends";
    const QString folder = QStringLiteral("/long").repeated(100);
    window_.setPlaces({folder, here}, {there});
    EXPECT_TRUE(places().toolTip().contains(folder));
    EXPECT_TRUE(places().toolTip().contains(here));
    places().setCurrentIndex(1);
    EXPECT_FALSE(places().toolTip().contains(folder));
    const QString label = QStringLiteral("<b>Project ").repeated(20);
    window_.setPresets({label});
    const QPoint row = list().visualRect(list().model()->index(0, 0)).center();
    QHelpEvent help(QEvent::ToolTip, row, list().viewport()->mapToGlobal(row));
    QCoreApplication::sendEvent(list().viewport(), &help);
    EXPECT_TRUE(QToolTip::text().contains(label.toHtmlEscaped())) << qPrintable(QToolTip::text());
}

TEST_F(LauncherWindowTest, AFieldThatIsOpenedAgainIsTypedOver)
{
    type("pho");
    list().setFocus();
    window_.beginTyping();
    type("let");
    EXPECT_EQ(field().text(), QStringLiteral("let"));
}
