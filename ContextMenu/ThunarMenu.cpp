// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ThunarMenu.h"

#include "ContextMenu/MenuText.h"
#include "ContextMenu/ThunarActions.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QVersionNumber>

#include <algorithm>
#include <chrono>
#include <optional>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcThunar, "quenby.contextmenu.thunar")

const QString relativePath = QStringLiteral("Thunar/uca.xml");
constexpr qint64 largestFile = qint64(16) << 20;
const QVersionNumber firstVersionWithSubmenus(4, 17);
/// It answers within a few milliseconds, or never.
constexpr auto versionTimeout = 2s;

/// Whether XML has a form for each character.
bool isXML(const QString &text)
{
    return std::none_of(text.begin(), text.end(), [](QChar character) {
        return (character < u' ' && character != u'\t' && character != u'\n' && character != u'\r') ||
               character >= u'\xfffe';
    });
}

void append(QByteArray &action, const QByteArray &element, const QString &text)
{
    // A carriage return that is not spelled out is read as a line end.
    const QString escaped = text.toHtmlEscaped().replace(u'\r', QStringLiteral("&#13;"));
    action += "\t<" + element + '>' + escaped.toUtf8() + "</" + element + ">\n";
}

bool isThere(const QString &path)
{
    const QFileInfo information(path);
    return information.exists() || information.isSymLink();
}

} // namespace

QString ThunarMenu::name() const
{
    return QStringLiteral("Thunar");
}

QString ThunarMenu::program() const
{
    return QStringLiteral("thunar");
}

QString ThunarMenu::configurationFolder() const
{
    return QFileInfo(actionsFile()).path();
}

QString ThunarMenu::actionsFile() const
{
    return DesktopFolders::configHome() + u'/' + relativePath;
}

QByteArray ThunarMenu::actionsOfTheSystem() const
{
    QString folders = qEnvironmentVariable("XDG_CONFIG_DIRS");
    if (folders.isEmpty())
        folders = QStringLiteral("/etc/xdg");
    const QStringList list = folders.split(u':');
    for (const QString &folder : list) {
        const QString path = folder + u'/' + relativePath;
        if (!folder.startsWith(u'/') || !QFileInfo::exists(path))
            continue;
        const Result<QByteArray> bytes = BoundedFile::read(path, largestFile);
        QString error = bytes.error;
        if (bytes && ThunarActions::withActions(*bytes, {}, &error) == *bytes)
            return *bytes;
        qCWarning(lcThunar) << path << error;
    }
    return ThunarActions::emptyFile();
}

bool ThunarMenu::knowsSubmenus(const QByteArray &file) const
{
    // No other version would have written, or read, that.
    if (file.contains("<submenu"))
        return true;
    const QString path = QStandardPaths::findExecutable(program());
    if (path.isEmpty())
        return true;
    QProcess process;
    process.start(path, {QStringLiteral("--version")}, QIODevice::ReadOnly);
    if (!process.waitForFinished(std::chrono::milliseconds(versionTimeout).count())) {
        process.kill();
        process.waitForFinished();
        return true;
    }
    // "thunar 4.18.4 (Xfce 4.18)"
    const QByteArrayList words = process.readAllStandardOutput().split(' ');
    const QVersionNumber version = QVersionNumber::fromString(QString::fromLatin1(words.value(1)));
    return version.isNull() || version >= firstVersionWithSubmenus;
}

QByteArrayList ThunarMenu::actions(const PresetMenu &menu, bool withSubmenu, QStringList &remarks)
{
    QByteArrayList actions;
    for (const PresetMenu::Item &item : menu.items) {
        const QByteArray command = MenuText::shellCommandLine(menu.commandLine(item), "%f");
        const QString commandText = QString::fromUtf8(command);
        if (!isXML(commandText) || !isXML(item.title) || commandText.toUtf8() != command) {
            remarks.append(QStringLiteral("%1 is not in the menu of Thunar, whose file has no form for it")
                               .arg(item.title));
            continue;
        }
        const QString title = MenuText::withoutMnemonics(
            withSubmenu ? item.title : PresetMenu::title + QStringLiteral(": ") + item.title, u'_');
        QByteArray action = "<action>\n";
        append(action, "icon", PresetMenu::icon);
        append(action, "name", title);
        if (withSubmenu)
            append(action, "submenu", PresetMenu::title);
        append(action, "unique-id", ThunarActions::identifierPrefix + QString::number(actions.size() + 1));
        append(action, "command", commandText);
        append(action, "description", QString());
        append(action, "range", QString());
        append(action, "patterns", QStringLiteral("*"));
        actions.append(action + "\t<directories/>\n</action>");
    }
    return actions;
}

bool ThunarMenu::hasEntries(const Manifest &manifest) const
{
    const QStringList paths = manifest.entries(program()).sharedFiles.keys();
    return std::any_of(paths.begin(), paths.end(), [](const QString &path) {
        const Result<QByteArray> bytes = BoundedFile::read(path, largestFile);
        QString error;
        const std::optional<QByteArray> others =
            bytes ? ThunarActions::withActions(*bytes, {}, &error) : std::nullopt;
        return others && *others != *bytes;
    });
}

Result<QStringList> ThunarMenu::write(const PresetMenu &menu, Manifest &manifest) const
{
    const QString path = actionsFile();
    Manifest::Entries entries = manifest.entries(program());
    QByteArray present;
    QString error;
    if (isThere(path)) {
        const Result<QByteArray> bytes = BoundedFile::read(path, largestFile);
        if (!bytes)
            return Result<QStringList>::failure(bytes.error);
        present = *bytes;
        if (!entries.sharedFiles.contains(path))
            entries.sharedFiles.insert(path, QString());
    } else {
        manifest.noteMissingFolders(QFileInfo(path).path());
        present = actionsOfTheSystem();
        entries.sharedFiles.insert(path, Manifest::hashOf(present));
    }
    QStringList remarks;
    const std::optional<QByteArray> wanted =
        ThunarActions::withActions(present, actions(menu, knowsSubmenus(present), remarks), &error);
    if (!wanted)
        return Result<QStringList>::failure(
            QStringLiteral("%1 is left alone, it is damaged: %2").arg(path, error));
    manifest.setEntries(program(), entries);
    if (Result<> saved = manifest.save(); !saved)
        return Result<QStringList>::failure(saved.error);
    if (*wanted == present)
        return remarks;
    const DurableFileWriter writer;
    if (Result<> made = writer.makeFolder(QFileInfo(path).path()); !made)
        return Result<QStringList>::failure(made.error);
    writer.removeStrayTemporaries(path);
    const Result<> written = writer.write(path, *wanted);
    return written ? remarks : Result<QStringList>::failure(written.error);
}

Result<QStringList> ThunarMenu::remove(Manifest &manifest) const
{
    const Manifest::Entries entries = manifest.entries(program());
    const DurableFileWriter writer;
    for (auto file = entries.sharedFiles.begin(); file != entries.sharedFiles.end(); ++file) {
        writer.removeStrayTemporaries(file.key());
        if (!isThere(file.key()))
            continue;
        const Result<QByteArray> present = BoundedFile::read(file.key(), largestFile);
        QString error = present.error;
        const std::optional<QByteArray> wanted =
            present ? ThunarActions::withActions(*present, {}, &error) : std::nullopt;
        if (!wanted)
            return Result<QStringList>::failure(
                QStringLiteral("%1 is left alone, it is damaged: %2").arg(file.key(), error));
        Result<> result;
        if (Manifest::hashOf(*wanted) == file.value())
            result = writer.remove(file.key());
        else if (*wanted != *present)
            result = writer.write(file.key(), *wanted);
        if (!result)
            return Result<QStringList>::failure(result.error);
    }
    manifest.removeEntries(program());
    return QStringList();
}
