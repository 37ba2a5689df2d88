// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/NemoMenu.h"

#include "ContextMenu/ScriptsFolder.h"
#include "Platform/Desktop/DesktopFolders.h"

QString NemoMenu::name() const
{
    return QStringLiteral("Nemo");
}

QString NemoMenu::program() const
{
    return QStringLiteral("nemo");
}

QString NemoMenu::configurationFolder() const
{
    return DesktopFolders::configHome() + QStringLiteral("/nemo");
}

QList<FileManagerWithFiles::File> NemoMenu::files(const PresetMenu &menu) const
{
    return ScriptsFolder::files(menu, DesktopFolders::dataHome() + QStringLiteral("/nemo/scripts"), "NEMO");
}
