// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Operation.h"
#include "Platform/Files/FolderLayer.h"

#include <QHash>
#include <vector>

namespace Creation {

/// Finds the content files that items name.
class ContentFolder
{
public:
    ContentFolder(FolderLayer &layer, const QString &folder);

    struct Found
    {
        /// The place in contents().
        qint32 content = Operation::noContent;
        /// Why the file cannot be used; empty if it can.
        QString problem;
    };
    /// Of a name that is not empty. Looks at each file once.
    Found find(const QString &name);

    const QByteArray &folder() const { return folder_; }
    const std::vector<Content> &contents() const { return contents_; }

private:
    Found look(const QString &name);

    FolderLayer &layer_;
    const QByteArray folder_;
    QHash<QString, Found> known_;
    std::vector<Content> contents_;
};

} // namespace Creation
