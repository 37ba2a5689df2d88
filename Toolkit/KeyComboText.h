// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Keyboard/KeyboardLayout.h"
#include "Platform/Desktop/KeyCodes.h"

#include <QString>

/// \a combo in the desktop's notation, for people, with its key as \a layout names it; empty for an empty
/// combination.
QString keyComboText(const KeyCombo &combo, const KeyboardLayout &layout);
