// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QMenu>

namespace ScrollingMenu {

/// Has \a menu and the menus in it scroll if they are longer than the screen. Most styles would show columns,
/// the last of which could not be reached.
inline void makeOf(QMenu &menu)
{
    menu.setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1 }"));
}

} // namespace ScrollingMenu
