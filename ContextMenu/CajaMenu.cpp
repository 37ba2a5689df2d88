// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/CajaMenu.h"

#include "ContextMenu/ScriptsFolder.h"
#include "Platform/Desktop/DesktopFolders.h"

QString CajaMenu::name() const
{
    return QStringLiteral("Caja");
}

QString CajaMenu::program() const
{
    return QStringLiteral("caja");
}

QString CajaMenu::configurationFolder() const
{
    return DesktopFolders::configHome() + QStringLiteral("/caja");
}

QList<FileManagerWithFiles::File> CajaMenu::files(const PresetMenu &menu) const
{
    return ScriptsFolder::files(menu, DesktopFolders::configHome() + QStringLiteral("/caja/scripts"), "CAJA");
}
