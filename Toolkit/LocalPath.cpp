// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/LocalPath.h"

#include <QSysInfo>
#include <QUrl>

QString localPathOfUrl(const QUrl &url)
{
    const QString host = url.host();
    const bool isOnThisMachine = host.isEmpty() || host == u"localhost" ||
                                 host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
    const QString path = url.path(QUrl::FullyDecoded);
    return url.scheme() == u"file" && isOnThisMachine && path.startsWith(u'/') ? path : QString();
}
