// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Keyboard/LayoutKeys.h"

#include <QKeySequence>

#include <gtest/gtest.h>

namespace {

constexpr quint64 ctrl = KeyCodes::commandFlag;
constexpr quint64 ctrlShift = KeyCodes::commandFlag | KeyCodes::shiftFlag;

// In the places of these keys on a US keyboard.
constexpr qint64 keyA = 0;
constexpr qint64 keyZ = 6;
constexpr qint64 besideShift = 10;
constexpr qint64 keyY = 16;
constexpr qint64 key1 = 18;
constexpr qint64 keyEqual = 24;
constexpr qint64 keyBracketLeft = 33;
constexpr qint64 keyQuoteLeft = 50;
constexpr qint64 keypad1 = 83;

struct Case
{
    const char *layout;
    KeyCombo combo;
    const char16_t *printed;
    const char16_t *typed;
};

const Case cases[] = {
    {"us", {ctrl, keyA}, u"Ctrl+A", u"Ctrl+A"},
    {"us", {ctrlShift, keyA}, u"Ctrl+Shift+A", u"Ctrl+Shift+A"},
    {"us", {ctrlShift, key1}, u"Ctrl+Shift+1", u"Ctrl+!"},
    {"us", {ctrlShift, keyEqual}, u"Ctrl+Shift+=", u"Ctrl++"},
    {"us", {ctrlShift, 43}, u"Ctrl+Shift+,", u"Ctrl+<"},
    {"us", {ctrlShift, 49}, u"Ctrl+Shift+Space", u"Ctrl+Shift+Space"},
    {"us", {ctrlShift, 122}, u"Ctrl+Shift+F1", u"Ctrl+Shift+F1"},
    {"us", {ctrl, keypad1}, u"Ctrl+Num+1", u"Ctrl+Num+1"},
    {"us", {0, 74}, u"Volume Mute", u"Volume Mute"},
    {"us", {KeyCodes::controlFlag | KeyCodes::optionFlag, 36}, u"Meta+Alt+Return", u"Meta+Alt+Return"},
    {"de", {ctrl, keyZ}, u"Ctrl+Y", u"Ctrl+Y"},
    {"de", {ctrl, keyY}, u"Ctrl+Z", u"Ctrl+Z"},
    {"de", {ctrl, keyBracketLeft}, u"Ctrl+\u00dc", u"Ctrl+\u00dc"},
    {"de", {ctrl, 27}, u"Ctrl+\u00df", u"Ctrl+\u00df"},
    {"de", {ctrlShift, 27}, u"Ctrl+Shift+\u00df", u"Ctrl+?"},
    {"de", {ctrl, besideShift}, u"Ctrl+<", u"Ctrl+<"},
    {"de", {ctrl, keyQuoteLeft}, u"Ctrl+^", nullptr},
    {"ch", {ctrlShift, keyBracketLeft}, u"Ctrl+Shift+\u00dc", u"Ctrl+Shift+\u00c8"},
    {"fr", {ctrl, keyA}, u"Ctrl+Q", u"Ctrl+Q"},
    {"fr", {ctrl, key1}, u"Ctrl+&", u"Ctrl+&"},
    {"fr", {ctrlShift, key1}, u"Ctrl+Shift+&", u"Ctrl+1"},
    {"fr", {ctrl, keyBracketLeft}, u"Ctrl+^", nullptr},
    {"ru", {ctrl, keyA}, u"Ctrl+\u0424", u"Ctrl+\u0424"},
    {"ru", {ctrlShift, keyA}, u"Ctrl+Shift+\u0424", u"Ctrl+Shift+\u0424"},
    {"ru", {ctrl, key1}, u"Ctrl+1", u"Ctrl+1"},
};

QString text(const std::optional<QKeyCombination> &keys)
{
    return keys ? QKeySequence(*keys).toString(QKeySequence::PortableText) : QStringLiteral("none");
}

} // namespace

TEST(LayoutKeysTest, TheLayoutNamesTheKey)
{
    for (const Case &each : cases) {
        const KeyboardLayout layout = KeyboardLayout::named(QString::fromLatin1(each.layout));
        EXPECT_EQ(text(LayoutKeys::printed(each.combo, layout)), QString::fromUtf16(each.printed))
            << each.layout << ' ' << each.combo.code;
        if (each.typed) {
            EXPECT_EQ(text(LayoutKeys::typed(each.combo, layout)), QString::fromUtf16(each.typed))
                << each.layout << ' ' << each.combo.code;
        }
    }
}

TEST(LayoutKeysTest, DeadKeysAreTypedAsWhatTheyAre)
{
    EXPECT_EQ(LayoutKeys::typed({ctrl, keyQuoteLeft}, KeyboardLayout::named(QStringLiteral("de")))->key(),
              Qt::Key_Dead_Circumflex);
}

TEST(LayoutKeysTest, EveryKeyHasANameUnderEveryLayout)
{
    for (const char *name : {"us", "de", "fr", "ru"}) {
        const KeyboardLayout layout = KeyboardLayout::named(QString::fromLatin1(name));
        for (const KeyCodes::Key &key : KeyCodes::all()) {
            // Only Japanese keyboards have these.
            const bool isForeign = key.key == Qt::Key_unknown && key.code != besideShift;
            if (!isForeign) {
                EXPECT_TRUE(LayoutKeys::printed({ctrl, key.code}, layout)) << name << ' ' << key.code;
                EXPECT_TRUE(LayoutKeys::typed({ctrl, key.code}, layout)) << name << ' ' << key.code;
            }
        }
    }
}

TEST(LayoutKeysTest, WhatNoKeyHasIsNotNamed)
{
    const KeyboardLayout us = KeyboardLayout::named(QStringLiteral("us"));
    EXPECT_FALSE(LayoutKeys::printed({ctrl, 200}, us));
    EXPECT_FALSE(LayoutKeys::typed({ctrl, 200}, us));
    EXPECT_FALSE(LayoutKeys::printed({}, us));
    EXPECT_EQ(LayoutKeys::symbolName(200, us), QString());
    // The layout that there is not has no keys; those that every keyboard has keep their names.
    const KeyboardLayout none = KeyboardLayout::named(QStringLiteral("no such layout"));
    EXPECT_EQ(text(LayoutKeys::printed({ctrl, keyA}, none)), u"Ctrl+A");
    EXPECT_FALSE(LayoutKeys::printed({ctrl, besideShift}, none));
    EXPECT_EQ(LayoutKeys::symbolName(keyA, none), QString());
}

TEST(LayoutKeysTest, WhatMayMeanACharacterIsItsKeyToo)
{
    const KeyboardLayout de = KeyboardLayout::named(QStringLiteral("de"));
    const KeyCombo z{ctrl, keyZ, true};
    EXPECT_EQ(LayoutKeys::byPlace(z, de), (KeyCombo{ctrl, keyY}));
    EXPECT_EQ(LayoutKeys::places(z, de), (QList<KeyCombo>{{ctrl, keyZ}, {ctrl, keyY}}));
    EXPECT_EQ(text(LayoutKeys::printed(z, de)), u"Ctrl+Z");
    EXPECT_EQ(text(LayoutKeys::typed(z, de)), u"Ctrl+Z");
    EXPECT_EQ(LayoutKeys::byPlace({ctrl, keyZ}, de), (KeyCombo{ctrl, keyZ})) << "it is known to be the place";
    // Where the character stands in its place, is on no key, or the key gives none.
    for (const KeyCombo &combo : {KeyCombo{ctrl, keyA, true}, KeyCombo{ctrl, keyQuoteLeft, true},
                                  KeyCombo{ctrl, 36, true}, KeyCombo{ctrl, keypad1, true}})
        EXPECT_EQ(LayoutKeys::places(combo, de), (QList<KeyCombo>{{combo.flags, combo.code}})) << combo.code;
    EXPECT_EQ(LayoutKeys::places(z, KeyboardLayout::named(QStringLiteral("ru"))).size(), 1);
}

TEST(LayoutKeysTest, SymbolsHaveTheNamesThatXGivesThem)
{
    const KeyboardLayout us = KeyboardLayout::named(QStringLiteral("us"));
    EXPECT_EQ(LayoutKeys::symbolName(keyA, us), u"a");
    EXPECT_EQ(LayoutKeys::symbolName(keyBracketLeft, us), u"bracketleft");
    EXPECT_EQ(LayoutKeys::symbolName(116, us), u"Prior");
    EXPECT_EQ(LayoutKeys::symbolName(keypad1, us), u"KP_1");
    EXPECT_EQ(LayoutKeys::symbolName(69, us), u"KP_Add");
    EXPECT_EQ(LayoutKeys::symbolName(111, us), u"F12");
    EXPECT_EQ(LayoutKeys::symbolName(key1, KeyboardLayout::named(QStringLiteral("fr"))), u"ampersand");
}
