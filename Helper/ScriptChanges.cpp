// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptChanges.h"

#include <QByteArrayList>

#include <sys/stat.h>
#include <utility>

namespace {

/// In seconds. Nobody has found a new file, opened, changed and saved it by then.
constexpr time_t longestScript = 10;

timespec now(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return time;
}

bool isBefore(const timespec &one, const timespec &other)
{
    return std::pair(one.tv_sec, one.tv_nsec) < std::pair(other.tv_sec, other.tv_nsec);
}

} // namespace

ScriptChanges::ScriptChanges()
    // What file systems note may come from this clock, which stands still for a moment at a time.
    : begin_(now(CLOCK_REALTIME_COARSE))
{
}

bool ScriptChanges::takeInto(Creation::Record &record) const
{
    const timespec end = now(CLOCK_REALTIME);
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
