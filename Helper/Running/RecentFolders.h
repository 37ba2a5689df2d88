// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QString>
#include <QStringList>

/// The folders that presets were last created in, the last one first. Kept in a file, across restarts, which
/// the running helper and launchers of their own share.
class RecentFolders
{
public:
    static constexpr qsizetype mostKept = 12;
    static constexpr qsizetype mostShown = 6;

    /// \a stateFolder need not exist.
    explicit RecentFolders(const QString &stateFolder);

    /// The last of \a folders is the last one now. They are written once, at most mostKept of them; what
    /// cannot be written is known here until it can.
    void add(const QStringList &folders);
    /// Those that are there now; at most mostShown.
    QStringList existing() const;

private:
    QStringList read() const;
    Result<> write() const;

    const QString path_;
    QStringList unwritten_;
};
