// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/HelperProcesses.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

QList<qint64> helpers()
{
    QList<qint64> result;
    const QFileInfoList folders = QDir(QStringLiteral("/proc")).entryInfoList(QDir::Dirs);
    for (const QFileInfo &folder : folders) {
        QFile status(folder.filePath() + QStringLiteral("/status"));
        bool isProcess = false;
        const qint64 pid = folder.fileName().toLongLong(&isProcess);
        if (!isProcess || folder.ownerId() != ::geteuid() || !status.open(QIODevice::ReadOnly))
            continue;
        const QByteArray text = status.readAll();
        if (text.startsWith("Name:\tQNBHelper\n") && !text.contains("\nState:\tZ"))
            result.append(pid);
    }
    return result;
}
