// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Record.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLock.h"

#include <QString>
#include <optional>

/// The last creation, kept in `$XDG_STATE_HOME/Quenby` so that it can be undone by another process, and after
/// a restart.
class History
{
public:
    struct Creation
    {
        /// Of this creation among all.
        QString id;
        /// Of the preset.
        QString label;
        /// For each folder.
        ::Creation::Records records;
        /// Since beginUndo().
        bool isBeingUndone = false;
        /// When it began, in nanoseconds since 1970.
        qint64 begun = 0;
    };

    /// That of the user.
    History();
    explicit History(QString folder);

    /// Replaces what was kept; durable when it returns. Under the lock, like forget().
    Result<> store(const Creation &creation) const;
    /// Has the creation that is kept read as one that is being undone, even should this process be ended; of
    /// one that is already nothing has to be done. Durable when it returns, and possible on a full disk.
    Result<> beginUndo() const;
    /// Takes that back.
    Result<> endUndo() const;
    /// None if nothing is kept.
    Result<std::optional<Creation>> read() const;
    Result<> forget() const;
    /// Has nothing kept until bringBack(), by names that hold \a id. Needs no room on the disk.
    Result<> setAside(const QString &id) const;
    /// Undoes that, unless something was kept meanwhile, which stays.
    Result<> bringBack(const QString &id) const;
    /// Forgets what was set aside.
    Result<> forgetAside(const QString &id) const;
    /// Whether something is kept, readable or not.
    bool hasCreation() const;

    Result<FileLock> lock() const;

private:
    QString path() const;
    /// Where a creation is kept while it is being undone; out of date if one is kept in path(), too.
    QString undoingPath() const;

    const QString folder_;
};
