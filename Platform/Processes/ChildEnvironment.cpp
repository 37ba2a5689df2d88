// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ChildEnvironment.h"

#include <unistd.h>

QByteArrayList ChildEnvironment::assignments()
{
    QByteArrayList assignments;
    for (char *const *variable = environ; *variable; ++variable) {
        const QByteArray assignment(*variable);
        const QByteArray name = assignment.left(assignment.indexOf('='));
        if (name != busAddressVariable && name != busTypeVariable)
            assignments.append(assignment);
    }
    return assignments;
}

QProcessEnvironment ChildEnvironment::variables()
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const char *name : {busAddressVariable, busTypeVariable})
        variables.remove(QString::fromLatin1(name));
    return variables;
}
