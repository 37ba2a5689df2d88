// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/HelperFinder.h"

#include "Platform/Desktop/PaneFolders.h"
#include "Platform/Desktop/SharedFileList.h"
#include "Platform/Files/FileURL.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

const QString helperName = QStringLiteral("QNBHelper");
const QString helperBundle = QStringLiteral("QNBHelper.app");
const QString paneSuffix = QStringLiteral(".prefPane");
const QString codeFolder = QStringLiteral("/Contents/MacOS/");

bool isHelper(const QString &path)
{
    const QFileInfo information(path);
    return information.fileName() == helperName && information.isFile() && information.isExecutable();
}

/// The executable of the application at \a path; empty if that is not the helper.
QString executableOf(const QString &path)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
    const QString executable = bundle ? bundle->executablePath() : QString();
    return isHelper(executable) ? executable : QString();
}

QString besidePlugin(const QString &ownPath)
{
    // PLUG-IN/Contents/MacOS/PROGRAM
    const QDir folder(QFileInfo(QFileInfo(ownPath).canonicalFilePath()).path() + QStringLiteral("/../../.."));
    return executableOf(folder.absoluteFilePath(helperBundle));
}

QString loginItem()
{
    const std::optional<SharedFileList> list = SharedFileList::create();
    if (!list)
        return {};
    const QList<SharedFileList::Item> items = list->copySnapshot();
    for (const SharedFileList::Item &item : items) {
        const std::optional<QUrl> url = list->resolve(item);
        const std::optional<QByteArray> path = url ? pathOfFileURL(*url) : std::nullopt;
        if (!path)
            continue;
        const QString application = QDir::cleanPath(QFile::decodeName(*path));
        if (QFileInfo(application).fileName() != helperBundle)
            continue;
        if (QString executable = executableOf(application); !executable.isEmpty())
            return executable;
    }
    return {};
}

QString inPane()
{
    const QStringList folders = PaneFolders::installed();
    for (const QString &folder : folders) {
        const QDir panes(folder);
        const QStringList names =
            panes.entryList({u'*' + paneSuffix}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString &name : names) {
            const QString path = panes.absoluteFilePath(name) + codeFolder + helperBundle;
            if (QString executable = executableOf(path); !executable.isEmpty())
                return executable;
        }
    }
    return {};
}

QString inSearchPath()
{
    return QStandardPaths::findExecutable(helperName);
}

} // namespace

QByteArray HelperFinder::find(const QString &ownPath)
{
    QString path = besidePlugin(ownPath);
    for (QString (*const look)() : {loginItem, inPane, inSearchPath}) {
        if (path.isEmpty())
            path = look();
    }
    return path.isEmpty() ? QByteArray() : QFile::encodeName(QDir::cleanPath(path));
}

std::optional<Bundle> HelperFinder::paneOf(const QByteArray &helper)
{
    QString path = QFileInfo(QFile::decodeName(helper)).canonicalFilePath();
    while (path.size() > 1) {
        path = QFileInfo(path).path();
        if (path.endsWith(paneSuffix)) {
            if (std::optional<Bundle> bundle = Bundle::bundleWithPath(path))
                return bundle;
        }
    }
    return std::nullopt;
}
