// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/KeyCodes.h"

#include <QKeyCombination>
#include <QString>

/// Which combinations a user may take from all programs.
namespace KeyComboRules {

/// Whether \a key only changes others, or switches a lock.
bool isModifier(Qt::Key key);

/// Programs need nearly every key on its own, or with Shift; function and media keys are free.
bool needsModifier(const KeyCombo &combo);

/// What most programs do when the keys of \a combo are pressed, in the words of their menus; empty if it is
/// nothing of weight. \a keys is what the press means to them under the present layout.
QString usualMeaning(const KeyCombo &combo, QKeyCombination keys);

} // namespace KeyComboRules
