// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/DolphinMenu.h"

#include "ContextMenu/MenuText.h"
#include "Platform/Desktop/DesktopEntry.h"
#include "Platform/Desktop/DesktopFolders.h"

namespace {

const QString serviceMenu = QStringLiteral("/kio/servicemenus/org.quenby.Quenby.desktop");

QByteArray actionName(qsizetype index)
{
    return "preset" + QByteArray::number(index + 1);
}

} // namespace

QString DolphinMenu::name() const
{
    return QStringLiteral("Dolphin");
}

QString DolphinMenu::program() const
{
    return QStringLiteral("dolphin");
}

QString DolphinMenu::configurationFolder() const
{
    return DesktopFolders::dataHome() + QStringLiteral("/dolphin");
}

QList<FileManagerWithFiles::File> DolphinMenu::files(const PresetMenu &menu) const
{
    QByteArray actions;
    for (qsizetype index = 0; index < menu.items.size(); ++index)
        actions += actionName(index) + ';';

    QByteArray entry = QByteArray("[") + DesktopEntryKeys::group + "]\n";
    DesktopEntry::appendString(entry, DesktopEntryKeys::type, "Service");
    DesktopEntry::appendString(entry, DesktopEntryKeys::name, PresetMenu::title.toUtf8());
    // Asked for by versions before that of 2021.
    DesktopEntry::appendString(entry, "X-KDE-ServiceTypes", "KonqPopupMenu/Plugin");
    DesktopEntry::appendString(entry, "MimeType", "inode/directory;");
    DesktopEntry::appendString(entry, DesktopEntryKeys::icon, PresetMenu::icon.toUtf8());
    DesktopEntry::appendString(entry, "X-KDE-Submenu", PresetMenu::title.toUtf8());
    DesktopEntry::appendString(entry, "X-KDE-Priority", "TopLevel");
    DesktopEntry::appendString(entry, "Actions", actions);
    for (qsizetype index = 0; index < menu.items.size(); ++index) {
        const PresetMenu::Item &item = menu.items.at(index);
        entry += "\n[Desktop Action " + actionName(index) + "]\n";
        DesktopEntry::appendString(entry, DesktopEntryKeys::name, item.title.toUtf8());
        DesktopEntry::appendString(entry, DesktopEntryKeys::icon, PresetMenu::icon.toUtf8());
        DesktopEntry::appendString(entry, DesktopEntryKeys::exec,
                                   MenuText::desktopCommandLine(menu.commandLine(item), "%f"));
    }
    return {{DesktopFolders::dataHome() + serviceMenu, entry, true}};
}
