// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBEarlierStatesDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

QNBPresetRecordPtr preset(const QString &label, const QString &script = {})
{
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(label, QNBPresetKey::label);
    record->setValueForKey(script, QNBPresetKey::scriptFile);
    return record;
}

const QDateTime savedAt = QDateTime(QDate(2026, 3, 4), QTime(15, 6), Qt::UTC);
const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");
const QString c = QStringLiteral("C");

class QNBEarlierStatesDialogTest : public ::testing::Test
{
protected:
    static QListWidget &list(const QWidget &dialog) { return *dialog.findChild<QListWidget *>(); }
    static QString difference(const QWidget &dialog)
    {
        return dialog.findChild<QPlainTextEdit *>()->toPlainText();
    }
    static QPushButton &restore(const QWidget &dialog)
    {
        for (QPushButton *button : dialog.findChildren<QPushButton *>()) {
            if (button->text() == QStringLiteral("Restore"))
                return *button;
        }
        throw std::logic_error("no button");
    }

    const QList<QNBPresetRecordPtr> now_{preset(a), preset(b)};
    const QList<QNBEarlierState> states_{
        {savedAt, {preset(a, QStringLiteral("open.sh")), preset(c)}},
        {savedAt.addDays(-1), {preset(a), preset(b)}},
        {savedAt.addDays(-2), {preset(b), preset(a)}},
        {savedAt.addDays(-3), {preset(QStringLiteral("<h1>Big</h1>\nsecond line"))}},
    };
};

} // namespace

TEST_F(QNBEarlierStatesDialogTest, EachStateHasDateNumberAndWhatDiffers)
{
    const QNBEarlierStatesDialog dialog(states_, now_);
    ASSERT_EQ(list(dialog).count(), 4);
    const auto shown = [](const QDateTime &time) {
        return QLocale().toString(time.toLocalTime(), QLocale::ShortFormat);
    };
    EXPECT_EQ(list(dialog).item(0)->text(), shown(savedAt) + QStringLiteral(" – 2 presets"));
    EXPECT_EQ(list(dialog).item(3)->text(), shown(savedAt.addDays(-3)) + QStringLiteral(" – one preset"));
    EXPECT_EQ(difference(dialog), QStringLiteral("Comes back: C\nGoes: B\nBecomes as it was: A"));
    EXPECT_TRUE(restore(dialog).isEnabled());
    EXPECT_EQ(dialog.chosen()->saved, savedAt);
}

TEST_F(QNBEarlierStatesDialogTest, AStateThatChangesNothingCannotBeRestored)
{
    const QNBEarlierStatesDialog dialog(states_, now_);
    list(dialog).setCurrentRow(1);
    EXPECT_EQ(difference(dialog), QStringLiteral("These are the presets as they are now."));
    EXPECT_FALSE(restore(dialog).isEnabled());
    list(dialog).setCurrentRow(2);
    EXPECT_EQ(difference(dialog), QStringLiteral("The presets stand in another order."));
    EXPECT_TRUE(restore(dialog).isEnabled());
}

TEST_F(QNBEarlierStatesDialogTest, LabelsAreShownAsTheyAreInOneLine)
{
    const QNBEarlierStatesDialog dialog(states_, now_);
    list(dialog).setCurrentRow(3);
    EXPECT_TRUE(difference(dialog).startsWith(QStringLiteral("Comes back: <h1>Big</h1>␊second line\n")));
}

TEST_F(QNBEarlierStatesDialogTest, WithoutStatesItSaysSoAndOnlyCancels)
{
    QNBEarlierStatesDialog dialog({}, now_);
    dialog.show();
    EXPECT_TRUE(dialog.findChild<QLabel *>()->text().startsWith(u"There are no earlier states yet."));
    EXPECT_FALSE(list(dialog).isVisible());
    EXPECT_FALSE(dialog.findChild<QPlainTextEdit *>()->isVisible());
    EXPECT_FALSE(restore(dialog).isEnabled());
    EXPECT_FALSE(dialog.chosen());
}

TEST_F(QNBEarlierStatesDialogTest, TheKeyboardIsEnough)
{
    for (const bool isRestored : {true, false}) {
        QTimer::singleShot(0, [isRestored] {
            QWidget *dialog = QApplication::activeModalWidget();
            ASSERT_TRUE(dialog);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Down);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Down);
            // Past what it changes, where nothing can be typed.
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_X);
            EXPECT_EQ(difference(*dialog), QStringLiteral("The presets stand in another order."));
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
            EXPECT_TRUE(qobject_cast<QPushButton *>(dialog->focusWidget()));
            dialog->findChild<QListWidget *>()->setFocus();
            QTest::keyClick(dialog->focusWidget(), isRestored ? Qt::Key_Return : Qt::Key_Escape);
        });
        const auto chosen = QNBEarlierStatesDialog::runner()(nullptr, states_, now_);
        ASSERT_EQ(chosen.has_value(), isRestored);
        if (chosen) {
            EXPECT_EQ(chosen->saved, savedAt.addDays(-2));
        }
    }
}

TEST_F(QNBEarlierStatesDialogTest, TheMouseIsEnough)
{
    QWidget window;
    window.show();
    for (const bool isRestored : {true, false}) {
        QTimer::singleShot(0, [isRestored] {
            QWidget *dialog = QApplication::activeModalWidget();
            ASSERT_TRUE(dialog);
            EXPECT_EQ(dialog->windowModality(), Qt::WindowModal) << "other windows stay usable";
            const QListWidget &states = list(*dialog);
            const QPoint third = states.visualItemRect(states.item(2)).center();
            QTest::mouseClick(states.viewport(), Qt::LeftButton, {}, third);
            if (isRestored) {
                QTest::mouseDClick(states.viewport(), Qt::LeftButton, {}, third);
            } else {
                auto *const buttons = dialog->findChild<QDialogButtonBox *>();
                QTest::mouseClick(buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
            }
        });
        const auto chosen = QNBEarlierStatesDialog::runner()(&window, states_, now_);
        ASSERT_EQ(chosen.has_value(), isRestored);
        if (chosen) {
            EXPECT_EQ(chosen->saved, savedAt.addDays(-2));
        }
    }
}

TEST_F(QNBEarlierStatesDialogTest, EveryPartHasAnAccessibleName)
{
    const QNBEarlierStatesDialog dialog(states_, now_);
    EXPECT_FALSE(dialog.windowTitle().isEmpty());
    EXPECT_FALSE(list(dialog).accessibleName().isEmpty());
    EXPECT_FALSE(dialog.findChild<QPlainTextEdit *>()->accessibleName().isEmpty());
}
