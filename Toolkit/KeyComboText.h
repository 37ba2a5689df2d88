// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/KeyCodes.h"

#include <QString>

/// \a combo in the desktop's notation, for people; empty for an empty combination.
QString keyComboText(const KeyCombo &combo);
