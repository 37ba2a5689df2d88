// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileURL.h"

#include <QString>

std::optional<QByteArray> pathOfFileURL(const QUrl &url)
{
    const QString host = url.host();
    if (!url.isValid() || !url.isLocalFile() || !(host.isEmpty() || host == u"localhost"))
        return {};
    const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!path.startsWith('/') || path.contains('\0'))
        return {};
    return path;
}

QUrl fileURLOfPath(const QByteArray &path)
{
    const QString text = QString::fromUtf8(path);
    // Two slashes at the start would be taken for a host.
    if (text.toUtf8() == path && !path.startsWith("//"))
        return QUrl::fromLocalFile(text);
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/"));
}
