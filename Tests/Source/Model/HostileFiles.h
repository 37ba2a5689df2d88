// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QList>

/// Files that would take memory and time out of proportion to their size if what they share were not shared
/// in memory and when it is written again.
struct HostileFile
{
    const char *name;
    /// An archive for a preset file, or a domain.
    bool isPreset;
    QByteArray bytes;
    /// Whether it is within the limits, and so must be read.
    bool isRead;
};

/// Of about so many bytes each, and the small ones.
QList<HostileFile> hostileFiles(qsizetype size);
