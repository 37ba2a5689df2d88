// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/KeyCodes.h"

#include <QMap>
#include <QSet>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace {

/// The virtual key codes, and the kernel's names of the keys in the same places.
const QMap<qint64, quint32> expectedKeys = {
    {0, KEY_A},           {1, KEY_S},          {2, KEY_D},          {3, KEY_F},          {4, KEY_H},
    {5, KEY_G},           {6, KEY_Z},          {7, KEY_X},          {8, KEY_C},          {9, KEY_V},
    {10, KEY_102ND},      {11, KEY_B},         {12, KEY_Q},         {13, KEY_W},         {14, KEY_E},
    {15, KEY_R},          {16, KEY_Y},         {17, KEY_T},         {18, KEY_1},         {19, KEY_2},
    {20, KEY_3},          {21, KEY_4},         {22, KEY_6},         {23, KEY_5},         {24, KEY_EQUAL},
    {25, KEY_9},          {26, KEY_7},         {27, KEY_MINUS},     {28, KEY_8},         {29, KEY_0},
    {30, KEY_RIGHTBRACE}, {31, KEY_O},         {32, KEY_U},         {33, KEY_LEFTBRACE}, {34, KEY_I},
    {35, KEY_P},          {36, KEY_ENTER},     {37, KEY_L},         {38, KEY_J},         {39, KEY_APOSTROPHE},
    {40, KEY_K},          {41, KEY_SEMICOLON}, {42, KEY_BACKSLASH}, {43, KEY_COMMA},     {44, KEY_SLASH},
    {45, KEY_N},          {46, KEY_M},         {47, KEY_DOT},       {48, KEY_TAB},       {49, KEY_SPACE},
    {50, KEY_GRAVE},      {51, KEY_BACKSPACE}, {53, KEY_ESC},       {64, KEY_F17},       {65, KEY_KPDOT},
    {67, KEY_KPASTERISK}, {69, KEY_KPPLUS},    {71, KEY_NUMLOCK},   {72, KEY_VOLUMEUP},  {73, KEY_VOLUMEDOWN},
    {74, KEY_MUTE},       {75, KEY_KPSLASH},   {76, KEY_KPENTER},   {78, KEY_KPMINUS},   {79, KEY_F18},
    {80, KEY_F19},        {81, KEY_KPEQUAL},   {82, KEY_KP0},       {83, KEY_KP1},       {84, KEY_KP2},
    {85, KEY_KP3},        {86, KEY_KP4},       {87, KEY_KP5},       {88, KEY_KP6},       {89, KEY_KP7},
    {90, KEY_F20},        {91, KEY_KP8},       {92, KEY_KP9},       {93, KEY_YEN},       {94, KEY_RO},
    {95, KEY_KPCOMMA},    {96, KEY_F5},        {97, KEY_F6},        {98, KEY_F7},        {99, KEY_F3},
    {100, KEY_F8},        {101, KEY_F9},       {102, KEY_HANJA},    {103, KEY_F11},      {104, KEY_HANGEUL},
    {105, KEY_F13},       {106, KEY_F16},      {107, KEY_F14},      {109, KEY_F10},      {111, KEY_F12},
    {113, KEY_F15},       {114, KEY_INSERT},   {115, KEY_HOME},     {116, KEY_PAGEUP},   {117, KEY_DELETE},
    {118, KEY_F4},        {119, KEY_END},      {120, KEY_F2},       {121, KEY_PAGEDOWN}, {122, KEY_F1},
    {123, KEY_LEFT},      {124, KEY_RIGHT},    {125, KEY_DOWN},     {126, KEY_UP}};

TEST(KeyCodesTest, EveryCodeIsTheKeyInItsPlace)
{
    QMap<qint64, quint32> found;
    for (const KeyCodes::Key &key : KeyCodes::all())
        found.insert(key.code, key.scanCode);
    EXPECT_EQ(found, expectedKeys);
    EXPECT_EQ(KeyCodes::all().size(), std::size_t(expectedKeys.size())) << "a code stands there twice";
}

TEST(KeyCodesTest, EveryRowIsFoundFromBothSides)
{
    for (const KeyCodes::Key &key : KeyCodes::all()) {
        EXPECT_EQ(KeyCodes::withCode(key.code), &key) << key.code;
        // Whatever the layout makes of it.
        EXPECT_EQ(KeyCodes::pressed(key.scanCode + KeyCodes::scanCodeOffset, Qt::CTRL | Qt::Key_A), &key)
            << key.code;
    }
    EXPECT_EQ(KeyCodes::withCode(200), nullptr);
    EXPECT_EQ(KeyCodes::withCode(-1), nullptr);
    EXPECT_EQ(KeyCodes::pressed(KEY_LEFTSHIFT + KeyCodes::scanCodeOffset, Qt::Key_Shift), nullptr);
}

TEST(KeyCodesTest, APressFromNoKeyboardIsTakenForOneOnAUSKeyboard)
{
    QSet<const KeyCodes::Key *> found;
    int unnamed = 0;
    for (const KeyCodes::Key &key : KeyCodes::all()) {
        if (key.key == Qt::Key_unknown) {
            ++unnamed;
            continue;
        }
        const Qt::KeyboardModifiers mark =
            key.kind == KeyCodes::Kind::Keypad ? Qt::KeypadModifier : Qt::NoModifier;
        EXPECT_EQ(KeyCodes::pressed(0, QKeyCombination(mark | Qt::ControlModifier, key.key)), &key)
            << key.code;
        found.insert(&key);
    }
    EXPECT_EQ(found.size() + unnamed, expectedKeys.size());
    EXPECT_EQ(unnamed, 3);
    EXPECT_EQ(KeyCodes::pressed(0, Qt::KeypadModifier | Qt::Key_Left)->code, 123);
    // Of Ctrl+Shift+=, which is not the plus of the keypad.
    EXPECT_EQ(KeyCodes::pressed(0, Qt::CTRL | Qt::SHIFT | Qt::Key_Plus), nullptr);
    EXPECT_EQ(KeyCodes::pressed(0, Qt::Key_unknown), nullptr);
}

TEST(KeyCodesTest, ModifiersChangeNamesAcrossMachines)
{
    EXPECT_EQ(KeyCodes::flagsOf(Qt::ControlModifier), KeyCodes::commandFlag);
    EXPECT_EQ(KeyCodes::flagsOf(Qt::MetaModifier), KeyCodes::controlFlag);
    EXPECT_EQ(KeyCodes::flagsOf(Qt::AltModifier), KeyCodes::optionFlag);
    EXPECT_EQ(KeyCodes::flagsOf(Qt::ShiftModifier), KeyCodes::shiftFlag);
    EXPECT_EQ(KeyCodes::flagsOf(Qt::KeypadModifier), 0U);
    for (const quint64 flags :
         {KeyCodes::shiftFlag | KeyCodes::commandFlag, KeyCodes::controlFlag | KeyCodes::optionFlag})
        EXPECT_EQ(KeyCodes::flagsOf(KeyCodes::modifiersOf(flags)), flags);
}

TEST(KeyCodesTest, NoCombinationIsEmpty)
{
    EXPECT_TRUE((KeyCombo{0, 0}.isEmpty()));
    EXPECT_TRUE((KeyCombo{KeyCodes::commandFlag, -1}.isEmpty()));
    EXPECT_FALSE((KeyCombo{0, 122}.isEmpty()));
}

} // namespace
