// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/ContentFolder.h"

#include "Helper/Creation/ItemName.h"
#include "Helper/Creation/SupportFile.h"

#include <QFile>

namespace Creation {

ContentFolder::ContentFolder(FolderLayer &layer, const QString &folder)
    : layer_(layer)
    , folder_(QFile::encodeName(folder))
{
}

ContentFolder::Found ContentFolder::find(const QString &name)
{
    const auto known = known_.constFind(name);
    return known != known_.cend() ? *known : *known_.insert(name, look(name));
}

ContentFolder::Found ContentFolder::look(const QString &name)
{
    const SupportFile file(layer_, folder_, name);
    if (!file.isOpen())
        return {Operation::noContent,
                QStringLiteral("the content file “%1” %2").arg(ItemName::shownName(name), file.problem())};
    contents_.push_back({name, FileIdentity(file.information())});
    return {static_cast<qint32>(contents_.size() - 1), {}};
}

} // namespace Creation
