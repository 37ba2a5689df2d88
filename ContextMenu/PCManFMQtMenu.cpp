// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PCManFMQtMenu.h"

#include "ContextMenu/MenuText.h"
#include "Platform/Desktop/DesktopEntry.h"
#include "Platform/Desktop/DesktopFolders.h"

namespace {

const QString prefix = QStringLiteral("quenby");
const QString suffix = QStringLiteral(".desktop");

/// What a menu and an action have in common.
QByteArray entryOf(const char *type, const QString &title)
{
    QByteArray entry = QByteArray("[") + DesktopEntryKeys::group + "]\n";
    DesktopEntry::appendString(entry, DesktopEntryKeys::type, type);
    // Ampersands mark keys, and what "%" begins is replaced in names too.
    const QString shown = MenuText::withoutMnemonics(MenuText::withoutFieldCodes(title), u'&');
    DesktopEntry::appendString(entry, DesktopEntryKeys::name, shown.toUtf8());
    DesktopEntry::appendString(entry, DesktopEntryKeys::icon, PresetMenu::icon.toUtf8());
    return entry;
}

/// Where they are shown: on one folder, or on the background of one.
void appendConditions(QByteArray &entry)
{
    DesktopEntry::appendString(entry, "MimeTypes", "inode/directory;");
    DesktopEntry::appendString(entry, "SelectionCount", "=1");
}

} // namespace

QString PCManFMQtMenu::name() const
{
    return QStringLiteral("PCManFM-Qt");
}

QString PCManFMQtMenu::program() const
{
    return QStringLiteral("pcmanfm-qt");
}

QString PCManFMQtMenu::configurationFolder() const
{
    return DesktopFolders::configHome() + QStringLiteral("/pcmanfm-qt");
}

QList<FileManagerWithFiles::File> PCManFMQtMenu::files(const PresetMenu &menu) const
{
    const QString folder = DesktopFolders::dataHome() + QStringLiteral("/file-manager/actions/");
    QList<File> files;
    QByteArray actions;
    for (qsizetype index = 0; index < menu.items.size(); ++index) {
        const PresetMenu::Item &item = menu.items.at(index);
        const QString name = prefix + u'-' + MenuText::number(index);
        QByteArray entry = entryOf("Action", item.title);
        DesktopEntry::appendString(entry, "Profiles", "folder;");
        entry += "\n[X-Action-Profile folder]\n";
        appendConditions(entry);
        DesktopEntry::appendString(entry, DesktopEntryKeys::exec,
                                   MenuText::desktopCommandLine(menu.commandLine(item), "%f"));
        files.append({folder + name + suffix, entry});
        actions += name.toUtf8() + ';';
    }
    QByteArray submenu = entryOf("Menu", PresetMenu::title);
    DesktopEntry::appendString(submenu, "ItemsList", actions);
    appendConditions(submenu);
    files.append({folder + prefix + suffix, submenu});
    return files;
}
