// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QKeyCombination>
#include <optional>

/// A key combination as it is stored: a mask of modifiers and a virtual key code, both in the numbering of
/// the machines on which the format was made, so that stored combinations move between machines unchanged.
struct KeyCombo
{
    quint64 flags = 0;
    qint64 code = 0;
    friend bool operator==(const KeyCombo &, const KeyCombo &) = default;

    /// No combination: without modifiers code 0 is nobody's hot key.
    bool isEmpty() const { return code < 0 || (code == 0 && flags == 0); }
};

namespace KeyCodes {

inline constexpr quint64 shiftFlag = 1U << 17;
inline constexpr quint64 controlFlag = 1U << 18;
inline constexpr quint64 optionFlag = 1U << 19;
inline constexpr quint64 commandFlag = 1U << 20;

/// None for a code that no Qt key stands for. Command is Ctrl, control is Meta, option is Alt.
std::optional<QKeyCombination> toQt(const KeyCombo &combo);
/// None for a key without a code, modifier keys for example.
std::optional<KeyCombo> fromQt(QKeyCombination keys);

} // namespace KeyCodes
