// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/TrayIcon.h"

#include "Helper/Running/ProgramIcon.h"

#include <QCoreApplication>

TrayIcon::TrayIcon(PresetMenu &menu)
    : icon_(programIcon())
{
    icon_.setToolTip(QCoreApplication::translate("TrayIcon", "Quenby: create a preset"));
    icon_.setContextMenu(&menu.menu());
    icon_.show();
}
