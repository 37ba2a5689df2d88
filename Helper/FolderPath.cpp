// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/FolderPath.h"

#include <QDir>
#include <QFileInfo>

QString FolderPath::shortened(const QString &path)
{
    const QString absolute = QDir::current().absoluteFilePath(path);
    if (!absolute.split(u'/').contains(QStringLiteral("..")))
        return QDir::cleanPath(absolute);
    const QString canonical = QFileInfo(absolute).canonicalFilePath();
    // Cleaned, one that leads nowhere might lead to another folder.
    return canonical.isEmpty() ? absolute : canonical;
}
