// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboRecorder.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

const KeyCombo ctrlShiftN{KeyCodes::commandFlag | KeyCodes::shiftFlag, 45};

class KeyComboRecorderTest : public ::testing::Test
{
protected:
    KeyComboRecorderTest()
    {
        recorder.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&recorder));
        recorder.setFocus();
    }

    void startRecording() { QTest::keyClick(field(), Qt::Key_Space); }
    QPushButton *field() const { return recorder.findChild<QPushButton *>(); }
    QToolButton *clearButton() const { return recorder.findChild<QToolButton *>(); }

    KeyComboRecorder recorder;
    QSignalSpy changes{&recorder, &KeyComboRecorder::keyComboDidChange};
};

TEST_F(KeyComboRecorderTest, ShowsTheCombinationInWords)
{
    EXPECT_EQ(field()->text(), u"None");
    EXPECT_FALSE(clearButton()->isEnabled());
    recorder.setKeyCombo(ctrlShiftN);
    EXPECT_EQ(field()->text(), u"Ctrl+Shift+N");
    EXPECT_EQ(recorder.keyCombo(), ctrlShiftN);
    EXPECT_EQ(changes.count(), 0) << "set by the program, not chosen";
}

TEST_F(KeyComboRecorderTest, KeepsCombinationsThatThisKeyboardDoesNotHave)
{
    const KeyCombo foreign{KeyCodes::commandFlag | (1U << 8), 0x1234};
    recorder.setKeyCombo(foreign);
    EXPECT_EQ(recorder.keyCombo(), foreign);
    EXPECT_EQ(field()->text(), u"Key 4660");
}

TEST_F(KeyComboRecorderTest, RecordsByKeyboard)
{
    startRecording();
    EXPECT_TRUE(recorder.isRecording());
    QTest::keyClick(field(), Qt::Key_Control);
    EXPECT_TRUE(recorder.isRecording()) << "a modifier alone is no combination";
    QTest::keyClick(field(), Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(recorder.keyCombo(), ctrlShiftN);
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(KeyComboRecorderTest, TheMnemonicOfItsLabelLeadsToIt)
{
    QWidget window;
    QLabel label(QStringLiteral("&Shortcut"), &window);
    QLineEdit before(&window);
    KeyComboRecorder field(&window);
    label.setBuddy(&field);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    before.setFocus();
    QTest::keyClick(&before, Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), field.findChild<QPushButton *>());
}

TEST_F(KeyComboRecorderTest, PlainKeysAreRefusedFunctionKeysAreNot)
{
    startRecording();
    QTest::keyClick(field(), Qt::Key_N);
    QTest::keyClick(field(), Qt::Key_N, Qt::ShiftModifier);
    EXPECT_TRUE(recorder.isRecording());
    QTest::keyClick(field(), Qt::Key_F7);
    EXPECT_EQ(recorder.keyCombo(), (KeyCombo{0, 98}));
}

TEST_F(KeyComboRecorderTest, ALoneModifierIsRefused)
{
    startRecording();
    for (const Qt::Key key : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_Meta,
                              Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_Hyper_L, Qt::Key_CapsLock}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::ControlModifier);
        QApplication::sendEvent(field(), &press);
    }
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_TRUE(recorder.keyCombo().isEmpty());
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(KeyComboRecorderTest, EscapeAndLeavingKeepTheOldOne)
{
    recorder.setKeyCombo(ctrlShiftN);
    startRecording();
    QTest::keyClick(field(), Qt::Key_Escape);
    EXPECT_FALSE(recorder.isRecording());
    startRecording();
    field()->clearFocus();
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(recorder.keyCombo(), ctrlShiftN);
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(KeyComboRecorderTest, TabLeavesAndEndsRecording)
{
    recorder.setKeyCombo(ctrlShiftN);
    startRecording();
    QTest::keyClick(field(), Qt::Key_Tab);
    EXPECT_FALSE(field()->hasFocus());
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(recorder.keyCombo(), ctrlShiftN);
}

TEST_F(KeyComboRecorderTest, DeleteAndTheButtonClear)
{
    recorder.setKeyCombo(ctrlShiftN);
    startRecording();
    QTest::keyClick(field(), Qt::Key_Delete);
    EXPECT_TRUE(recorder.keyCombo().isEmpty());
    recorder.setKeyCombo(ctrlShiftN);
    QTest::mouseClick(clearButton(), Qt::LeftButton);
    EXPECT_TRUE(recorder.keyCombo().isEmpty());
    EXPECT_EQ(changes.count(), 2);
}

} // namespace
