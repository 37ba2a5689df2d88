// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Keyboard/KeyboardLayout.h"
#include "Platform/Desktop/KeyCodes.h"

#include <QString>

/// Key combinations as the desktop's portal writes them (XDG Shortcuts Specification).
namespace PortalTrigger {

/// "CTRL+ALT+p", with the key as \a layout names it; empty for a key that has no name there.
QString forCombo(const KeyCombo &combo, const KeyboardLayout &layout);

/// The keys in a desktop's description of a trigger as the user knows them: "Ctrl+Alt+P" for "Press
/// <Control><Alt>p", as GNOME writes it. Any other description as it is.
QString shown(const QString &description, const KeyboardLayout &layout);

} // namespace PortalTrigger
