// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/NemoMenu.h"

#include "ContextMenu/MenuText.h"
#include "Platform/DesktopEntry.h"
#include "Platform/DesktopFolders.h"

namespace {

struct Place
{
    /// Of the file.
    QLatin1StringView suffix;
    /// What has to be selected, and what of it is meant.
    const char *selection;
    const char *extensions;
    const char *fieldCode;
};

/// A path is put in as it is, apart from what its quotes need.
constexpr Place places[] = {
    {QLatin1StringView("-folder"), "s", "dir;", "%F"},
    {QLatin1StringView("-background"), "none", "any;", "%P"},
};

/// Underscores mark keys, and what "%" begins is replaced in names too.
QByteArray actionTitle(const PresetMenu::Item &item)
{
    const QString text = PresetMenu::title + QStringLiteral(": ") + item.title;
    return MenuText::withoutMnemonics(MenuText::withoutFieldCodes(text), u'_').toUtf8();
}

} // namespace

QString NemoMenu::name() const
{
    return QStringLiteral("nemo");
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
    const QString prefix = DesktopFolders::dataHome() + QStringLiteral("/nemo/actions/quenby-");
    QList<File> files;
    for (qsizetype index = 0; index < menu.items.size(); ++index) {
        const PresetMenu::Item &item = menu.items.at(index);
        for (const Place &place : places) {
            QByteArray action = "[Nemo Action]\n";
            DesktopEntry::appendString(action, DesktopEntryKeys::name, actionTitle(item));
            DesktopEntry::appendString(action, "Icon-Name", PresetMenu::icon.toUtf8());
            DesktopEntry::appendString(action, "Selection", place.selection);
            DesktopEntry::appendString(action, "Extensions", place.extensions);
            DesktopEntry::appendString(action, "Quote", "double");
            DesktopEntry::appendString(action, DesktopEntryKeys::exec,
                                       MenuText::desktopCommandLine(menu.commandLine(item), place.fieldCode));
            files.append(
                {prefix + MenuText::number(index) + place.suffix + QStringLiteral(".nemo_action"), action});
        }
    }
    return files;
}
