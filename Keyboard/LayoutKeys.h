// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Keyboard/KeyboardLayout.h"
#include "Platform/Desktop/KeyCodes.h"

#include <QKeyCombination>
#include <QList>
#include <QString>

#include <optional>

/// A stored combination, which names a place on the keyboard, as a layout names it.
namespace LayoutKeys {

/// The combination as one of a known place: itself, or one of the key that gives its character under
/// \a layout if it may mean that and there is one.
KeyCombo byPlace(const KeyCombo &combo, const KeyboardLayout &layout);

/// The one or two combinations of known places that \a combo stands for.
QList<KeyCombo> places(const KeyCombo &combo, const KeyboardLayout &layout);

/// With the character that is printed on the key, as people write it: Ctrl+Shift+1. Where the combination may
/// mean a character it is that. None for a code that no key has.
std::optional<QKeyCombination> printed(const KeyCombo &combo, const KeyboardLayout &layout);

/// With the character that is typed, as desktops that go by characters know it: Shift counts with what it
/// does not change, so that the same is Ctrl+! on a US keyboard. None as above.
std::optional<QKeyCombination> typed(const KeyCombo &combo, const KeyboardLayout &layout);

/// What X calls the symbol that the key with the stored code \a code gives: "p", "bracketleft", "KP_1". Empty
/// for a code that no key has, or a key without a symbol.
QString symbolName(qint64 code, const KeyboardLayout &layout);

} // namespace LayoutKeys
