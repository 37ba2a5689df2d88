// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace Creation {

/// The names in a folder, and new ones that are unique among them by the same rule as in the editor: as
/// QNBUniqueName(), for whoever needs many of them.
class TakenNames
{
public:
    void add(const QString &name);
    /// The first free one of the names that \a filename leads to; it is taken from now on.
    QString takeUniqueName(const QString &filename);

private:
    /// In lower case.
    QSet<QString> names_;
    /// By the name without a number: no lower number is free.
    QHash<QString, qsizetype> firstNumbers_;
};

} // namespace Creation
