// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptEnvironment.h"

#include <unistd.h>

namespace {

const QByteArray programs = "PATH=";
const QByteArray libraries = "LD_LIBRARY_PATH=";

QByteArray absoluteOf(const QByteArray &list)
{
    QByteArrayList absolute;
    for (const QByteArray &folder : list.split(':')) {
        if (folder.startsWith('/'))
            absolute.append(folder);
    }
    return absolute.join(':');
}

/// Where the system has its programs. Without any list some shells look in the working folder.
QByteArray systemsList()
{
    QByteArray list(qsizetype(::confstr(_CS_PATH, nullptr, 0)), '\0');
    ::confstr(_CS_PATH, list.data(), std::size_t(list.size()));
    list.chop(1);
    return list;
}

} // namespace

QByteArrayList ScriptEnvironment::assignments()
{
    QByteArrayList assignments;
    bool hasPrograms = false;
    for (char *const *variable = environ; *variable; ++variable) {
        const QByteArray assignment(*variable);
        if (assignment.startsWith(programs)) {
            const QByteArray absolute = absoluteOf(assignment.mid(programs.size()));
            assignments.append(programs + (absolute.isEmpty() ? systemsList() : absolute));
            hasPrograms = true;
        } else if (assignment.startsWith(libraries)) {
            const QByteArray absolute = absoluteOf(assignment.mid(libraries.size()).replace(';', ':'));
            if (!absolute.isEmpty())
                assignments.append(libraries + absolute);
        } else {
            assignments.append(assignment);
        }
    }
    if (!hasPrograms)
        assignments.append(programs + systemsList());
    return assignments;
}
