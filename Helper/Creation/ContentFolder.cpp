// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/ContentFolder.h"

#include "Helper/Creation/ItemName.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Creation {

namespace {

ContentFolder::Found refused(const QString &name, const QString &reason)
{
    return {Operation::noContent,
            QStringLiteral("the content file “%1” %2").arg(ItemName::shownName(name), reason)};
}

ContentFolder::Found failed(const QString &name, int error)
{
    return refused(name, systemError(QStringLiteral("cannot be used"), error));
}

} // namespace

ContentFolder::ContentFolder(FolderLayer &layer, const QString &folder)
    : layer_(layer)
    , folder_(folder)
{
}

ContentFolder::Found ContentFolder::find(const QString &name)
{
    const auto known = known_.constFind(name);
    return known != known_.cend() ? *known : *known_.insert(name, look(name));
}

ContentFolder::Found ContentFolder::look(const QString &name)
{
    if (name.contains(QChar(u'\0')) || !name.isValidUtf16())
        return refused(name, QStringLiteral("has a name that no file has"));
    if (resolvedFolder_.isNull()) {
        const auto folder = layer_.realpath(QFile::encodeName(folder_));
        if (!folder)
            return failed(name, errno);
        resolvedFolder_ = folder->endsWith('/') ? *folder : *folder + '/';
    }
    const auto path = layer_.realpath(resolvedFolder_ + name.toUtf8());
    if (!path)
        return failed(name, errno);
    if (!path->startsWith(resolvedFolder_))
        return refused(name, QStringLiteral("is outside the folder of content files"));
    struct stat information = {};
    if (layer_.lstat(*path, &information) == -1)
        return failed(name, errno);
    if (!S_ISREG(information.st_mode))
        return refused(name, QStringLiteral("is no file"));
    if (layer_.access(*path, R_OK) == -1)
        return failed(name, errno);
    contents_.push_back({name, *path, FileIdentity(information)});
    return {static_cast<qint32>(contents_.size() - 1), {}};
}

} // namespace Creation
