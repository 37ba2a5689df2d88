// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/NautilusMenu.h"

#include "ContextMenu/ScriptsFolder.h"
#include "Platform/Desktop/DesktopFolders.h"

QString NautilusMenu::name() const
{
    return QStringLiteral("Nautilus");
}

QString NautilusMenu::program() const
{
    return QStringLiteral("nautilus");
}

QString NautilusMenu::configurationFolder() const
{
    return DesktopFolders::dataHome() + QStringLiteral("/nautilus");
}

QList<FileManagerWithFiles::File> NautilusMenu::files(const PresetMenu &menu) const
{
    return ScriptsFolder::files(menu, DesktopFolders::dataHome() + QStringLiteral("/nautilus/scripts"),
                                "NAUTILUS");
}
