// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/TakenNames.h"

#include "Platform/Files/PathExtension.h"
#include "Source/Model/QNBUniqueName.h"

namespace Creation {

void TakenNames::add(const QString &name)
{
    names_.insert(name.toLower());
}

QString TakenNames::takeUniqueName(const QString &filename)
{
    QString name = filename;
    if (names_.contains(name.toLower())) {
        const QString base = stringByDeletingPathExtension(filename);
        const QString extension = pathExtension(filename);
        qsizetype &number = firstNumbers_[filename.toLower()];
        do {
            name = QNBNumberedName(base, extension, ++number);
        } while (names_.contains(name.toLower()));
    }
    add(name);
    return name;
}

} // namespace Creation
