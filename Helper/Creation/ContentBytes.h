// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Platform/Files/FolderLayer.h"

#include <QHash>

namespace Creation {

/// Puts the bytes of content files into new ones. Small ones are read once for all files that receive them.
class ContentBytes
{
public:
    /// Those of \a plan, which outlives this.
    ContentBytes(FolderLayer &layer, const Plan &plan)
        : layer_(layer)
        , plan_(plan)
    {
    }

    /// Appends the bytes of the content number \a content to the open file \a file. False with errno, ESTALE
    /// if another file is where the content file was.
    bool writeTo(int file, qint32 content);

    /// What is kept in memory, of one file and of all.
    static constexpr qsizetype mostOfOne = 128 * 1024;
    static constexpr qsizetype mostOfAll = 16 * 1024 * 1024;

private:
    bool copy(int from, int file, qint32 content, bool keep);
    bool write(int file, const QByteArray &bytes);

    FolderLayer &layer_;
    const Plan &plan_;
    QHash<qint32, QByteArray> kept_;
    qsizetype keptSize_ = 0;
};

} // namespace Creation
