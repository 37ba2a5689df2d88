// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/FileViewer.h"

#include "Platform/Bus/SessionBus.h"
#include "Platform/Desktop/Workspace.h"

#include <QDBusMessage>
#include <QFileInfo>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcFileViewer, "quenby.platform.fileviewer")

const QString service = QStringLiteral("org.freedesktop.FileManager1");
const QString objectPath = QStringLiteral("/org/freedesktop/FileManager1");
const QString interfaceName = service;
const QString showItems = QStringLiteral("ShowItems");

} // namespace

FileViewer::FileViewer(std::shared_ptr<SessionBus> bus, std::chrono::milliseconds timeout)
    : bus_(std::move(bus))
    , timeout_(timeout)
{
}

bool FileViewer::selectFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink()) {
        qCWarning(lcFileViewer) << "not shown, nothing is there:" << path;
        return false;
    }
    const QString absolute = file.absoluteFilePath();
    const QString folder = file.isDir() ? absolute : file.absolutePath();
    QDBusMessage message = QDBusMessage::createMethodCall(service, objectPath, interfaceName, showItems);
    const QString startupId;
    message << QStringList{QUrl::fromLocalFile(absolute).toString(QUrl::FullyEncoded)} << startupId;
    bus_->call(message, timeout_, [absolute, folder](const QDBusMessage &answer) {
        if (answer.type() != QDBusMessage::ErrorMessage)
            return;
        qCInfo(lcFileViewer) << "no file manager shows" << absolute << answer.errorName()
                             << answer.errorMessage() << "- opening" << folder;
        // As a folder, though it may be an application.
        Workspace::openURL(QUrl::fromLocalFile(folder));
    });
    return true;
}
