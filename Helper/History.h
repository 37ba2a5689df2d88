// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Record.h"
#include "Platform/DurableFileWriter.h"
#include "Platform/FileLock.h"

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
        ::Creation::Record record;
    };

    /// That of the user.
    History();
    explicit History(QString folder);

    /// Replaces what was kept; durable when it returns. Under the lock, like forget().
    FileResult store(const Creation &creation) const;
    /// None without one, and then without an error, or if it cannot be read.
    std::optional<Creation> read(QString *error) const;
    FileResult forget() const;
    /// Whether something is kept, readable or not.
    bool hasCreation() const;

    /// None on failure, with the reason in \a error.
    std::optional<FileLock> lock(QString *error) const;

private:
    QString path() const;

    const QString folder_;
};
