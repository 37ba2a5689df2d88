// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBShared.h"

#include <QStandardPaths>

QString QNBApplicationSupportPath()
{
    static const QString path =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Quenby");
    return path;
}

QString QNBProductIdentifier()
{
    return QStringLiteral(QUENBY_IDENTIFIER);
}

QString stringByRemovingCharactersInSet(const QString &string, QStringView characters)
{
    QString result = string;
    result.removeIf([characters](QChar unit) { return characters.contains(unit); });
    return result;
}

QString stringByDeletingFileSystemEntities(const QString &string)
{
    return stringByRemovingCharactersInSet(string, u"/~:");
}
