// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Removal.h"

#include <cerrno>
#include <fcntl.h>

namespace Creation {

void Removal::remove(RecordWalk &walk)
{
    for (auto number = static_cast<qsizetype>(record_.entries.size()) - 1; number >= 0; --number) {
        if (record_.entries[static_cast<std::size_t>(number)].isMade())
            removeEntry(walk, number);
    }
}

void Removal::removeEntry(RecordWalk &walk, qsizetype number)
{
    const Record::Entry &entry = record_.entries[static_cast<std::size_t>(number)];
    const int folder = walk.enter(entry.folder);
    struct stat information = {};
    if (folder == -1 ||
        layer_.fstatat(folder, entry.name.constData(), &information, AT_SYMLINK_NOFOLLOW) == -1) {
        if (errno != ENOENT)
            keep(number, systemError(QStringLiteral("it cannot be reached"), errno));
        return;
    }
    if (FileIdentity(information) != entry.identity) {
        keep(number, QStringLiteral("something else has taken its place"));
        return;
    }
    if (layer_.unlinkat(folder, entry.name.constData(), entry.isFolder() ? AT_REMOVEDIR : 0) == 0)
        return;
    keep(number, errno == ENOTEMPTY || errno == EEXIST
                     ? QStringLiteral("something was put into it")
                     : systemError(QStringLiteral("it cannot be removed"), errno));
}

void Removal::keep(qsizetype number, const QString &reason)
{
    remains_.add(record_.path(number), reason);
    kept_.push_back(number);
}

} // namespace Creation
