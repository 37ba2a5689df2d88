// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QKeyCombination>

#include <span>

/// A key combination as it is stored: a mask of modifiers and a virtual key code, both in the numbering of
/// the machines on which the format was made, so that stored combinations move between machines unchanged.
/// The code names a key by its place on the keyboard, whatever the layout prints on it.
struct KeyCombo
{
    quint64 flags = 0;
    qint64 code = 0;
    /// Stored by nobody knows whom: by a program that means the place, or by our first version, which meant
    /// the key that gives the character of that place on a US keyboard.
    bool mayMeanCharacter = false;
    friend bool operator==(const KeyCombo &, const KeyCombo &) = default;

    /// No combination: without modifiers code 0 is nobody's hot key.
    bool isEmpty() const { return code < 0 || (code == 0 && flags == 0); }
};

namespace KeyCodes {

inline constexpr quint64 shiftFlag = 1U << 17;
inline constexpr quint64 controlFlag = 1U << 18;
inline constexpr quint64 optionFlag = 1U << 19;
inline constexpr quint64 commandFlag = 1U << 20;

enum class Kind {
    /// Letters, digits and signs: what it gives is up to the layout.
    Typing,
    /// Return, arrows and the like, which programs need on their own.
    Editing,
    Keypad,
    Function,
    Media,
};

/// A key of the keyboard.
struct Key
{
    qint64 code;
    /// As the kernel numbers keys. The numbers of display servers, which QKeyEvent::nativeScanCode() tells,
    /// are greater by scanCodeOffset.
    quint32 scanCode;
    /// What it is on a US keyboard; Qt::Key_unknown if that has no such key.
    Qt::Key key;
    Kind kind;
};

inline constexpr quint32 scanCodeOffset = 8;

/// Each code and each scan code once.
std::span<const Key> all();
/// Null if there is no such key.
const Key *withCode(qint64 code);
/// The key of a QKeyEvent, by its native scan code; a press that comes from no keyboard has none (0), and is
/// taken for one on a US keyboard. Null if there is no such key.
const Key *pressed(quint32 nativeScanCode, QKeyCombination keys);

/// Command is Ctrl, control is Meta, option is Alt.
quint64 flagsOf(Qt::KeyboardModifiers modifiers);
Qt::KeyboardModifiers modifiersOf(quint64 flags);

} // namespace KeyCodes
