// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Keys are pressed by their numbers, as the hardware does, whatever the layout makes of them.

#include "Platform/Desktop/KeyCodes.h"
#include "Tests/EndToEnd/HelperFixture.h"

#include <QPair>

#include <linux/input-event-codes.h>

namespace {

const QString recorderName = QStringLiteral("Shortcut for the list of presets");

struct Chord
{
    const char *name;
    QList<quint32> keys;
    KeyCombo stored;
};

constexpr quint64 command = KeyCodes::commandFlag;
constexpr quint64 option = KeyCodes::optionFlag;
constexpr quint64 shift = KeyCodes::shiftFlag;
constexpr quint64 control = KeyCodes::controlFlag;

/// Named as on a US keyboard.
const QList<Chord> chords = {
    {"Ctrl+Shift+1", {KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_1}, {command | shift, 18}},
    {"Ctrl+Shift+0", {KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_0}, {command | shift, 29}},
    {"Ctrl+Shift+,", {KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_COMMA}, {command | shift, 43}},
    {"Ctrl+Shift+=", {KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_EQUAL}, {command | shift, 24}},
    {"Ctrl+Alt+Y", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_Y}, {command | option, 16}},
    {"Ctrl+Alt+Z", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_Z}, {command | option, 6}},
    {"Ctrl+Alt+Q", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_Q}, {command | option, 12}},
    {"Ctrl+Alt+[", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTBRACE}, {command | option, 33}},
    {"Ctrl+Alt+;", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_SEMICOLON}, {command | option, 41}},
    {"Ctrl+Alt+`", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_GRAVE}, {command | option, 50}},
    {"Ctrl+Alt+(beside Shift)", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_102ND}, {command | option, 10}},
    {"Ctrl+keypad +", {KEY_LEFTCTRL, KEY_KPPLUS}, {command, 69}},
    {"Ctrl+Alt+keypad 1", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_KP1}, {command | option, 83}},
    {"Super+Space", {KEY_LEFTMETA, KEY_SPACE}, {control, 49}},
    {"Ctrl+Alt+Insert", {KEY_LEFTCTRL, KEY_LEFTALT, KEY_INSERT}, {command | option, 114}},
    {"F7", {KEY_F7}, {0, 98}},
    {"Mute", {KEY_MUTE}, {0, 74}},
};

/// A helper that runs already, and the pane at the tab with the recorder.
class HotKeyLayoutsTest : public HelperFixture, public ::testing::WithParamInterface<const char *>
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(HelperFixture::SetUp());
        helper_ = std::make_unique<ChildProcess>(PaneCopy::builtHelperProgram(), QStringList(),
                                                 screen_.environmentFrom(session_.environment()));
        ASSERT_TRUE(waitForLog("presets in the menu", 1));
        ASSERT_NO_FATAL_FAILURE(openPane());
        ASSERT_NO_FATAL_FAILURE(goToGeneralTab());
        ASSERT_NO_FATAL_FAILURE(walkTo(recorderName, {QStringLiteral("alt+s")}));
    }

    void useLayout(const QString &layout) const
    {
        screen_.ask(QStringLiteral("setxkbmap"), {layout});
        EXPECT_TRUE(screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("-query")})
                        .simplified()
                        .contains("layout: " + layout.toLatin1()));
    }
    void press(const QList<quint32> &keys) const
    {
        QStringList numbers;
        for (const quint32 key : keys)
            numbers.append(QString::number(key + KeyCodes::scanCodeOffset));
        screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("key"), numbers.join(u'+')});
    }
    bool waitForLog(const QByteArray &text, qsizetype times) const
    {
        return waitUntil([&] { return helper_->errors().count(text) >= times; }, patience);
    }
    /// Once the helper has left the present shortcut to the recorder.
    void startRecording()
    {
        press({KEY_SPACE});
        ASSERT_TRUE(waitForLog("the hot key is left to who records one", ++recordings_));
    }
    bool hasLauncher() const { return !screen_.windowsOf(helper_->pid()).isEmpty(); }
    bool waitForItsEnd() const
    {
        return waitUntil([&] { return !hasLauncher(); }, patience);
    }
    KeyCombo stored()
    {
        const auto number = [this](const QString &key) {
            return session_.domain().value(key).split(' ').constLast().toLongLong();
        };
        return {quint64(number(QStringLiteral("QNBHotKeyFlags"))), number(QStringLiteral("QNBHotKeyCode"))};
    }

    std::unique_ptr<ChildProcess> helper_;
    int recordings_ = 0;
};

} // namespace

TEST_P(HotKeyLayoutsTest, WhatIsRecordedIsHeardByTheSameKey)
{
    ASSERT_NO_FATAL_FAILURE(useLayout(QString::fromLatin1(GetParam())));
    for (const Chord &chord : chords) {
        SCOPED_TRACE(chord.name);
        ASSERT_NO_FATAL_FAILURE(startRecording());
        press(chord.keys);
        const bool isStored = waitUntil([&] { return stored() == chord.stored; }, patience);
        // The old one again, and then the new one; the helper reads the settings in between.
        const bool isHeard =
            isStored && waitUntil(
                            [&] {
                                press(chord.keys);
                                return waitUntil([&] { return hasLauncher(); }, std::chrono::seconds(1));
                            },
                            patience);
        EXPECT_TRUE(isHeard);
        const KeyCombo found = stored();
        std::printf("%-3s %-24s code %3lld flags %8llu %s\n", GetParam(), chord.name, (long long)found.code,
                    (unsigned long long)found.flags, isHeard ? "heard" : "NOT HEARD");
        const QString launcher = screen_.windowOf(helper_->pid());
        ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(launcher); }, patience));
        screen_.typeKey(QStringLiteral("Escape"));
        ASSERT_TRUE(waitForItsEnd());
        ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(window_); }, patience));
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, HotKeyLayoutsTest, ::testing::Values("us", "de", "fr", "ru"));
