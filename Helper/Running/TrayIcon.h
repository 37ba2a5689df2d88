// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/PresetMenu.h"

#include <QSystemTrayIcon>

/// The menu of presets in the desktop's tray, for as long as this lives. There has to be a tray, see
/// TrayWatch; it shows the menu, as it shows those of other programs.
class TrayIcon
{
public:
    explicit TrayIcon(PresetMenu &menu);
    TrayIcon(const TrayIcon &) = delete;
    TrayIcon &operator=(const TrayIcon &) = delete;

private:
    QSystemTrayIcon icon_;
};
