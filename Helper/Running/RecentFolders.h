// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

/// The folders that presets were last created in, the last one first. Kept in a file, across restarts.
class RecentFolders
{
public:
    static constexpr qsizetype mostKept = 12;
    static constexpr qsizetype mostShown = 6;

    /// \a stateFolder need not exist.
    explicit RecentFolders(const QString &stateFolder);

    /// The last of \a folders is the last one now. They are written once, at most mostKept of them.
    void add(const QStringList &folders);
    /// Those that are there now; at most mostShown.
    QStringList existing() const;

private:
    void write() const;

    const QString folder_;
    QStringList folders_;
};
