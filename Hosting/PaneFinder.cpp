// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneFinder.h"

#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/PaneFolders.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QDir>

namespace {

const QString paneExtension = QStringLiteral(".prefPane");

QString tr(const char *text)
{
    return QCoreApplication::translate("PaneFinder", text);
}

/// \a path if a pane may be there.
Result<QString> paneAt(const QString &path)
{
    return Bundle::bundleWithPath(path) ? path : Result<QString>::failure(PaneFinder::whyNoPane(path));
}

} // namespace

QStringList PaneFinder::searchFolders(const QString &ownFolder, const QString &installedPanes)
{
    QStringList folders = {ownFolder, QDir::cleanPath(ownFolder + u'/' + installedPanes)};
    folders += PaneFolders::installed();
    folders.removeDuplicates();
    return folders;
}

QStringList PaneFinder::panesIn(const QStringList &folders)
{
    QStringList paths;
    QStringList names;
    for (const QString &folder : folders) {
        const QStringList found =
            QDir(folder).entryList({u'*' + paneExtension}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString &name : found) {
            if (names.contains(name))
                continue;
            names.append(name);
            paths.append(folder + u'/' + name);
        }
    }
    return paths;
}

QString PaneFinder::whyNoPane(const QString &path)
{
    return (QFileInfo(path).isDir() ? tr("%1 is no settings pane: it has no readable Contents/Info.plist.")
                                    : tr("There is no settings pane at %1."))
        .arg(lineText(path));
}

bool PaneFinder::isPane(const QString &argument)
{
    const QFileInfo information(argument);
    const bool isBareName = !argument.contains(u'/') && information.suffix().isEmpty();
    return information.isDir() ||
           (!information.isFile() && (isBareName || QDir::cleanPath(argument).endsWith(paneExtension)));
}

Result<QString> PaneFinder::pathOfPane(const QString &name, const QStringList &folders)
{
    if (name.contains(u'/'))
        return paneAt(QDir::cleanPath(QFileInfo(name).absoluteFilePath()));
    const QStringList panes = panesIn(folders);
    for (const QString &path : panes) {
        const QString fileName = QFileInfo(path).fileName();
        if (fileName == name || fileName == name + paneExtension)
            return paneAt(path);
    }
    return Result<QString>::failure(
        tr("There is no settings pane called \"%1\" in\n%2").arg(lineText(name), folders.join(u'\n')));
}
