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
#include <linux/input-event-codes.h>

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
    /// A press as a keyboard sends it: of the key with this number, which the layout takes for \a key.
    void press(quint32 scanCode, int key, Qt::KeyboardModifiers modifiers = {}, bool isRepeated = false)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, scanCode + KeyCodes::scanCodeOffset, 0, 0, {},
                        isRepeated);
        QApplication::sendEvent(field(), &event);
    }
    /// What stands below the field; empty if nothing does.
    QString remark() const
    {
        const auto *label = recorder.findChild<QLabel *>();
        EXPECT_EQ(label->isVisible(), !label->text().isEmpty());
        if (label->isVisible()) {
            EXPECT_EQ(field()->accessibleDescription(), label->text());
        }
        return label->text();
    }
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

TEST_F(KeyComboRecorderTest, TheKeyIsRecordedWhateverTheLayoutMakesOfIt)
{
    struct Case
    {
        quint32 scanCode;
        int key;
        Qt::KeyboardModifiers modifiers;
        KeyCombo combo;
    };
    constexpr quint64 ctrl = KeyCodes::commandFlag;
    constexpr quint64 ctrlShift = KeyCodes::commandFlag | KeyCodes::shiftFlag;
    for (const Case &each :
         {Case{KEY_1, Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier, {ctrlShift, 18}},
          Case{KEY_COMMA, Qt::Key_Less, Qt::ControlModifier | Qt::ShiftModifier, {ctrlShift, 43}},
          Case{KEY_EQUAL, Qt::Key_Plus, Qt::ControlModifier | Qt::ShiftModifier, {ctrlShift, 24}},
          // As layouts of Germany, France and Russia have it.
          Case{KEY_Y, Qt::Key_Z, Qt::AltModifier | Qt::ControlModifier, {ctrl | KeyCodes::optionFlag, 16}},
          Case{KEY_102ND, Qt::Key_Less, Qt::ControlModifier, {ctrl, 10}},
          Case{KEY_GRAVE, Qt::Key_Dead_Circumflex, Qt::ControlModifier, {ctrl, 50}},
          Case{KEY_1, Qt::Key_Ampersand, Qt::ControlModifier, {ctrl, 18}},
          Case{KEY_F, 0x410, Qt::MetaModifier, {KeyCodes::controlFlag, 3}},
          Case{KEY_KP1, Qt::Key_End, Qt::ControlModifier | Qt::KeypadModifier, {ctrl, 83}}}) {
        startRecording();
        press(each.scanCode, each.key, each.modifiers);
        EXPECT_FALSE(recorder.isRecording()) << each.scanCode;
        EXPECT_EQ(recorder.keyCombo(), each.combo) << each.scanCode << " gave " << recorder.keyCombo().code;
    }
}

TEST_F(KeyComboRecorderTest, AKeyWithoutAModifierIsRefusedInWords)
{
    recorder.setKeyCombo(ctrlShiftN);
    startRecording();
    EXPECT_EQ(remark(), u"");
    struct Case
    {
        quint32 scanCode;
        int key;
        const char16_t *name;
    };
    for (const Case &each : {Case{KEY_N, Qt::Key_N, u"N"}, Case{KEY_ENTER, Qt::Key_Return, u"Return"},
                             Case{KEY_SPACE, Qt::Key_Space, u"Space"}, Case{KEY_LEFT, Qt::Key_Left, u"Left"},
                             Case{KEY_HOME, Qt::Key_Home, u"Home"}, Case{KEY_KP1, Qt::Key_1, u"Num+1"}}) {
        press(each.scanCode, each.key);
        EXPECT_EQ(remark(),
                  QStringLiteral("Every program needs %1. Press it together with Ctrl, Alt or Meta.")
                      .arg(QString::fromUtf16(each.name)));
        EXPECT_TRUE(recorder.isRecording());
    }
    press(KEY_DELETE, Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_TRUE(remark().contains(u"Shift+Del"));
    press(KEY_SYSRQ, Qt::Key_Print, Qt::ControlModifier);
    EXPECT_EQ(remark(), u"This key cannot be used in a shortcut.");
    EXPECT_EQ(recorder.keyCombo(), ctrlShiftN);
    EXPECT_EQ(changes.count(), 0);

    QTest::keyClick(field(), Qt::Key_Escape);
    EXPECT_EQ(remark(), u"") << "it is not shown beside what is chosen";
    EXPECT_EQ(field()->accessibleDescription(), u"Ctrl+Shift+N");
}

TEST_F(KeyComboRecorderTest, FunctionAndMediaKeysNeedNoModifier)
{
    startRecording();
    press(KEY_F7, Qt::Key_F7);
    EXPECT_EQ(recorder.keyCombo(), (KeyCombo{0, 98}));
    startRecording();
    press(KEY_F7, Qt::Key_F7, Qt::ShiftModifier);
    EXPECT_EQ(recorder.keyCombo(), (KeyCombo{KeyCodes::shiftFlag, 98}));
    startRecording();
    press(KEY_MUTE, Qt::Key_VolumeMute);
    EXPECT_EQ(recorder.keyCombo(), (KeyCombo{0, 74}));
    // What it means in some programs is none of ours.
    startRecording();
    press(KEY_F1, Qt::Key_F1);
    EXPECT_EQ(recorder.keyCombo(), (KeyCombo{0, 122}));
}

TEST_F(KeyComboRecorderTest, WhatMostProgramsUseIsTakenAtTheSecondPress)
{
    const KeyCombo ctrlS{KeyCodes::commandFlag, 1};
    const KeyCombo ctrlC{KeyCodes::commandFlag, 8};
    startRecording();
    press(KEY_S, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(remark(), u"Most programs use Ctrl+S for \"Save\". Press it again to take it all the same.");
    press(KEY_S, Qt::Key_S, Qt::ControlModifier, true);
    EXPECT_TRUE(recorder.isRecording()) << "the key is only held";
    press(KEY_C, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(remark().contains(u"\"Copy\""));
    press(KEY_S, Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(remark().contains(u"\"Save\"")) << "the other one was pressed in between";
    EXPECT_TRUE(recorder.keyCombo().isEmpty());
    press(KEY_S, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(recorder.keyCombo(), ctrlS);
    EXPECT_EQ(remark(), u"");
    EXPECT_EQ(changes.count(), 1);

    // Another time it is asked anew.
    startRecording();
    press(KEY_C, Qt::Key_C, Qt::ControlModifier);
    field()->clearFocus();
    recorder.setFocus();
    startRecording();
    press(KEY_C, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(recorder.isRecording());
    press(KEY_C, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(recorder.keyCombo(), ctrlC);
}

TEST_F(KeyComboRecorderTest, WhatAKeyMeansIsUpToTheLayout)
{
    // The key that types w under a layout of France, in the place of the Z.
    startRecording();
    press(KEY_Z, Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(remark().contains(u"\"Close\"")) << qPrintable(remark());
    QTest::keyClick(field(), Qt::Key_Escape);
    // Programs take the letter of a US keyboard where there is no Latin one.
    startRecording();
    press(KEY_S, 0x42b, Qt::ControlModifier);
    EXPECT_TRUE(remark().contains(u"\"Save\"")) << qPrintable(remark());
}

TEST_F(KeyComboRecorderTest, TellsWhileItRecords)
{
    QSignalSpy recordings(&recorder, &KeyComboRecorder::recordingChanged);
    startRecording();
    ASSERT_EQ(recordings.count(), 1);
    EXPECT_TRUE(recordings.takeFirst().constFirst().toBool());
    press(KEY_F7, Qt::Key_F7);
    ASSERT_EQ(recordings.count(), 1);
    EXPECT_FALSE(recordings.takeFirst().constFirst().toBool());
    recorder.setKeyCombo(ctrlShiftN);
    EXPECT_EQ(recordings.count(), 0);
}

TEST_F(KeyComboRecorderTest, ALoneModifierIsRefused)
{
    startRecording();
    for (const Qt::Key key :
         {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_Meta, Qt::Key_Super_L,
          Qt::Key_Super_R, Qt::Key_Hyper_L, Qt::Key_CapsLock, Qt::Key_NumLock}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::ControlModifier);
        QApplication::sendEvent(field(), &press);
    }
    press(KEY_NUMLOCK, Qt::Key_NumLock, Qt::ControlModifier);
    EXPECT_EQ(remark(), u"");
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
