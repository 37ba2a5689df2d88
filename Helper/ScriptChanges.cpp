// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptChanges.h"

#include <QByteArrayList>

#include <sys/stat.h>
#include <utility>

namespace {

/// In seconds. Nobody has found a new file, opened, changed and saved it by then.
constexpr time_t longestScript = 10;

/// As file systems note it: this clock stands still for a moment at a time.
timespec now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return time;
}

bool isBefore(const timespec &one, const timespec &other)
{
    return std::pair(one.tv_sec, one.tv_nsec) < std::pair(other.tv_sec, other.tv_nsec);
}

} // namespace

ScriptChanges::ScriptChanges()
    : begin_(now())
{
}

bool ScriptChanges::takeInto(Creation::Record &record) const
{
    const timespec end = now();
    if (isBefore(end, begin_) || end.tv_sec - begin_.tv_sec > longestScript)
        return false;
    bool hasChanged = false;
    QByteArrayList paths;
    paths.reserve(qsizetype(record.entries.size()));
    for (Creation::Record::Entry &entry : record.entries) {
        const QByteArray folder =
            entry.folder == Creation::Record::inTarget ? record.target : paths.at(entry.folder);
        paths.append(folder + '/' + entry.name);
        if (entry.isFolder())
            continue;
        struct stat status = {};
        if (::lstat(paths.last().constData(), &status) != 0 || !S_ISREG(status.st_mode) ||
            Creation::FileIdentity(status) != entry.identity || isBefore(status.st_mtim, begin_) ||
            isBefore(end, status.st_mtim))
            continue;
        hasChanged = hasChanged || entry.size != status.st_size || isBefore(entry.modified, status.st_mtim);
        entry.size = status.st_size;
        entry.modified = status.st_mtim;
    }
    return hasChanged;
}
