// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/KeyCodes.h"

#include <algorithm>
#include <array>

namespace {

using KeyCodes::Key;
using KeyCodes::Kind;

// The codes are those of the machines on which the format was made, the scan codes the kernel's.
constexpr std::array keyTable = std::to_array<Key>({
    {0, 30, Qt::Key_A, Kind::Typing},
    {1, 31, Qt::Key_S, Kind::Typing},
    {2, 32, Qt::Key_D, Kind::Typing},
    {3, 33, Qt::Key_F, Kind::Typing},
    {4, 35, Qt::Key_H, Kind::Typing},
    {5, 34, Qt::Key_G, Kind::Typing},
    {6, 44, Qt::Key_Z, Kind::Typing},
    {7, 45, Qt::Key_X, Kind::Typing},
    {8, 46, Qt::Key_C, Kind::Typing},
    {9, 47, Qt::Key_V, Kind::Typing},
    {10, 86, Qt::Key_unknown, Kind::Typing}, // between the left Shift and Z, on keyboards of Europe
    {11, 48, Qt::Key_B, Kind::Typing},
    {12, 16, Qt::Key_Q, Kind::Typing},
    {13, 17, Qt::Key_W, Kind::Typing},
    {14, 18, Qt::Key_E, Kind::Typing},
    {15, 19, Qt::Key_R, Kind::Typing},
    {16, 21, Qt::Key_Y, Kind::Typing},
    {17, 20, Qt::Key_T, Kind::Typing},
    {18, 2, Qt::Key_1, Kind::Typing},
    {19, 3, Qt::Key_2, Kind::Typing},
    {20, 4, Qt::Key_3, Kind::Typing},
    {21, 5, Qt::Key_4, Kind::Typing},
    {22, 7, Qt::Key_6, Kind::Typing},
    {23, 6, Qt::Key_5, Kind::Typing},
    {24, 13, Qt::Key_Equal, Kind::Typing},
    {25, 10, Qt::Key_9, Kind::Typing},
    {26, 8, Qt::Key_7, Kind::Typing},
    {27, 12, Qt::Key_Minus, Kind::Typing},
    {28, 9, Qt::Key_8, Kind::Typing},
    {29, 11, Qt::Key_0, Kind::Typing},
    {30, 27, Qt::Key_BracketRight, Kind::Typing},
    {31, 24, Qt::Key_O, Kind::Typing},
    {32, 22, Qt::Key_U, Kind::Typing},
    {33, 26, Qt::Key_BracketLeft, Kind::Typing},
    {34, 23, Qt::Key_I, Kind::Typing},
    {35, 25, Qt::Key_P, Kind::Typing},
    {36, 28, Qt::Key_Return, Kind::Editing},
    {37, 38, Qt::Key_L, Kind::Typing},
    {38, 36, Qt::Key_J, Kind::Typing},
    {39, 40, Qt::Key_Apostrophe, Kind::Typing},
    {40, 37, Qt::Key_K, Kind::Typing},
    {41, 39, Qt::Key_Semicolon, Kind::Typing},
    {42, 43, Qt::Key_Backslash, Kind::Typing},
    {43, 51, Qt::Key_Comma, Kind::Typing},
    {44, 53, Qt::Key_Slash, Kind::Typing},
    {45, 49, Qt::Key_N, Kind::Typing},
    {46, 50, Qt::Key_M, Kind::Typing},
    {47, 52, Qt::Key_Period, Kind::Typing},
    {48, 15, Qt::Key_Tab, Kind::Editing},
    {49, 57, Qt::Key_Space, Kind::Editing},
    {50, 41, Qt::Key_QuoteLeft, Kind::Typing},
    {51, 14, Qt::Key_Backspace, Kind::Editing},
    {53, 1, Qt::Key_Escape, Kind::Editing},
    {64, 187, Qt::Key_F17, Kind::Function},
    {65, 83, Qt::Key_Period, Kind::Keypad},
    {67, 55, Qt::Key_Asterisk, Kind::Keypad},
    {69, 78, Qt::Key_Plus, Kind::Keypad},
    {71, 69, Qt::Key_Clear, Kind::Keypad}, // Clear there, Num Lock on most keyboards
    {72, 115, Qt::Key_VolumeUp, Kind::Media},
    {73, 114, Qt::Key_VolumeDown, Kind::Media},
    {74, 113, Qt::Key_VolumeMute, Kind::Media},
    {75, 98, Qt::Key_Slash, Kind::Keypad},
    {76, 96, Qt::Key_Enter, Kind::Keypad},
    {78, 74, Qt::Key_Minus, Kind::Keypad},
    {79, 188, Qt::Key_F18, Kind::Function},
    {80, 189, Qt::Key_F19, Kind::Function},
    {81, 117, Qt::Key_Equal, Kind::Keypad},
    {82, 82, Qt::Key_0, Kind::Keypad},
    {83, 79, Qt::Key_1, Kind::Keypad},
    {84, 80, Qt::Key_2, Kind::Keypad},
    {85, 81, Qt::Key_3, Kind::Keypad},
    {86, 75, Qt::Key_4, Kind::Keypad},
    {87, 76, Qt::Key_5, Kind::Keypad},
    {88, 77, Qt::Key_6, Kind::Keypad},
    {89, 71, Qt::Key_7, Kind::Keypad},
    {90, 190, Qt::Key_F20, Kind::Function},
    {91, 72, Qt::Key_8, Kind::Keypad},
    {92, 73, Qt::Key_9, Kind::Keypad},
    {93, 124, Qt::Key_unknown, Kind::Typing}, // Yen, on Japanese keyboards
    {94, 89, Qt::Key_unknown, Kind::Typing},  // beside the right Shift, on Japanese keyboards
    {95, 121, Qt::Key_Comma, Kind::Keypad},
    {96, 63, Qt::Key_F5, Kind::Function},
    {97, 64, Qt::Key_F6, Kind::Function},
    {98, 65, Qt::Key_F7, Kind::Function},
    {99, 61, Qt::Key_F3, Kind::Function},
    {100, 66, Qt::Key_F8, Kind::Function},
    {101, 67, Qt::Key_F9, Kind::Function},
    {102, 123, Qt::Key_Eisu_toggle, Kind::Editing}, // to Latin letters, on Japanese keyboards
    {103, 87, Qt::Key_F11, Kind::Function},
    {104, 122, Qt::Key_Hiragana_Katakana, Kind::Editing}, // to kana, on Japanese keyboards
    {105, 183, Qt::Key_F13, Kind::Function},
    {106, 186, Qt::Key_F16, Kind::Function},
    {107, 184, Qt::Key_F14, Kind::Function},
    {109, 68, Qt::Key_F10, Kind::Function},
    {111, 88, Qt::Key_F12, Kind::Function},
    {113, 185, Qt::Key_F15, Kind::Function},
    {114, 110, Qt::Key_Insert, Kind::Editing}, // Help there, Insert on most keyboards
    {115, 102, Qt::Key_Home, Kind::Editing},
    {116, 104, Qt::Key_PageUp, Kind::Editing},
    {117, 111, Qt::Key_Delete, Kind::Editing},
    {118, 62, Qt::Key_F4, Kind::Function},
    {119, 107, Qt::Key_End, Kind::Editing},
    {120, 60, Qt::Key_F2, Kind::Function},
    {121, 109, Qt::Key_PageDown, Kind::Editing},
    {122, 59, Qt::Key_F1, Kind::Function},
    {123, 105, Qt::Key_Left, Kind::Editing},
    {124, 106, Qt::Key_Right, Kind::Editing},
    {125, 108, Qt::Key_Down, Kind::Editing},
    {126, 103, Qt::Key_Up, Kind::Editing},
});

struct ModifierEntry
{
    quint64 flag;
    Qt::KeyboardModifier modifier;
};

constexpr std::array modifierTable = std::to_array<ModifierEntry>({
    {KeyCodes::shiftFlag, Qt::ShiftModifier},
    {KeyCodes::controlFlag, Qt::MetaModifier},
    {KeyCodes::optionFlag, Qt::AltModifier},
    {KeyCodes::commandFlag, Qt::ControlModifier},
});

template <typename Predicate>
const Key *find(Predicate predicate)
{
    const auto *key = std::find_if(keyTable.begin(), keyTable.end(), predicate);
    return key == keyTable.end() ? nullptr : &*key;
}

} // namespace

std::span<const Key> KeyCodes::all()
{
    return keyTable;
}

const Key *KeyCodes::withCode(qint64 code)
{
    return find([code](const Key &key) { return key.code == code; });
}

const Key *KeyCodes::pressed(quint32 nativeScanCode, QKeyCombination keys)
{
    if (nativeScanCode != 0)
        return find([=](const Key &key) { return key.scanCode + scanCodeOffset == nativeScanCode; });
    const auto findPlace = [&keys](bool onKeypad) {
        return find([&keys, onKeypad](const Key &key) {
            return key.key == keys.key() && key.key != Qt::Key_unknown &&
                   (key.kind == Kind::Keypad) == onKeypad;
        });
    };
    const bool hasKeypadMark = keys.keyboardModifiers().testFlag(Qt::KeypadModifier);
    const Key *onKeypad = hasKeypadMark ? findPlace(true) : nullptr;
    // Keys like the arrows carry the mark on some keyboards.
    return onKeypad ? onKeypad : findPlace(false);
}

quint64 KeyCodes::flagsOf(Qt::KeyboardModifiers modifiers)
{
    quint64 flags = 0;
    for (const auto &[flag, modifier] : modifierTable) {
        if (modifiers.testFlag(modifier))
            flags |= flag;
    }
    return flags;
}

Qt::KeyboardModifiers KeyCodes::modifiersOf(quint64 flags)
{
    Qt::KeyboardModifiers modifiers;
    for (const auto &[flag, modifier] : modifierTable)
        modifiers.setFlag(modifier, (flags & flag) != 0);
    return modifiers;
}
