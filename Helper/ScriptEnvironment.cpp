// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptEnvironment.h"

#include "Platform/Processes/ChildEnvironment.h"

#include <unistd.h>

namespace {

const QByteArray programs = "PATH=";
const QByteArray libraries = "LD_LIBRARY_PATH=";
const QByteArrayList modules = {"NODE_PATH=", "PERL5LIB=", "PERLLIB=", "PYTHONPATH=", "RUBYLIB="};

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
    const QByteArrayList ours = ChildEnvironment::assignments();
    for (const QByteArray &assignment : ours) {
        const QByteArray name = assignment.left(assignment.indexOf('=') + 1);
        QByteArray list = assignment.mid(name.size());
        if (name == programs) {
            const QByteArray absolute = absoluteOf(list);
            assignments.append(programs + (absolute.isEmpty() ? systemsList() : absolute));
            hasPrograms = true;
        } else if (name == libraries || modules.contains(name)) {
            // Semicolons separate libraries, too.
            const QByteArray absolute = absoluteOf(name == libraries ? list.replace(';', ':') : list);
            if (!absolute.isEmpty())
                assignments.append(name + absolute);
        } else {
            assignments.append(assignment);
        }
    }
    if (!hasPrograms)
        assignments.append(programs + systemsList());
    return assignments;
}
