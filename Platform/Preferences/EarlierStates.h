// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"

#include <QDateTime>
#include <QList>
#include <chrono>

/// What a preference domain held before, beyond its backup: copies of the file, each of another state, at
/// most one an hour, and no more than numberKept and sizeKept in all, of which the oldest go first. Each is
/// `<UTC time>.plist`, the time at which that state was saved, readable by its owner only.
class EarlierStates
{
public:
    static constexpr int numberKept = 20;
    /// Bytes.
    static constexpr qint64 sizeKept = qint64(64) * 1024 * 1024;
    /// The least time between two copies.
    static constexpr std::chrono::hours interval{1};

    struct State
    {
        /// UTC.
        QDateTime saved;
        QString path;
        qint64 size = 0;
    };

    /// The user's own, "Earlier States" in the state folder; empty without a home.
    static QString folder();

    /// \a folder need not exist. \a layer stands for the system calls and is the real one if null; not owned.
    explicit EarlierStates(const QString &folder, FileLayer *layer = nullptr);

    /// Keeps \a bytes, which were saved at the time \a saved and are being replaced, unless they are kept
    /// already or the last copy was made less than an hour before \a now; neither is a failure, and nor is it
    /// that the folder is in another user's home, where nothing is written. Call under the lock of the
    /// domain.
    Result<> keep(const QByteArray &bytes, const QDateTime &saved,
                  const QDateTime &now = QDateTime::currentDateTimeUtc()) const;

    /// The youngest first.
    QList<State> all() const;

private:
    QString pathFor(const QDateTime &saved) const;

    DurableFileWriter writer_;
    QString folder_;
};
