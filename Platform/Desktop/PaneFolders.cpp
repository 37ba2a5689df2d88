// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/PaneFolders.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

const QString panesInDataFolder = QStringLiteral("/PreferencePanes");
/// What a data folder is called that belongs to a prefix. What lies beside any other is not the user's own.
const QString dataFolderOfPrefix = QStringLiteral("share");

} // namespace

QStringList PaneFolders::installed()
{
    QStringList folders;
    const QStringList dataFolders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString &path : dataFolders) {
        const QString dataFolder = QDir::cleanPath(path);
        if (QFileInfo(dataFolder).fileName() == dataFolderOfPrefix)
            folders.append(QDir::cleanPath(dataFolder + u'/' + QStringLiteral(QUENBY_PANES_FROM_DATA)));
        folders.append(dataFolder + panesInDataFolder);
    }
    return folders;
}
