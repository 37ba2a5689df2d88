// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// What became of an action that can fail: nothing more to say, or the reason in words for the log.
struct [[nodiscard]] FileResult
{
    bool ok = true;
    QString error;
    explicit operator bool() const { return ok; }
    static FileResult failure(const QString &reason) { return {false, reason}; }
};

class FileLayer;

/// Replaces a file's content so that after a crash, a full disk or a kill at any moment the path holds the
/// old bytes or the new ones, never others: temporary file in the folder of the resolved target (a symbolic
/// link stays a link), mode, owner and extended attributes of the old file kept, every write checked, fsync,
/// rename, fsync of the folder. Used for the preference domain, preset files and login items.
class DurableFileWriter
{
public:
    struct Options
    {
        /// Mode of a file that did not exist.
        int newFileMode = 0600;
        /// Keep the bytes being replaced under this path (a hard link where possible, else a copy); none if
        /// empty.
        QString backupPath = {};
    };

    /// \a layer stands for the system calls and is the real one if null; not owned.
    explicit DurableFileWriter(FileLayer *layer = nullptr);

    FileResult write(const QString &path, const QByteArray &bytes, const Options &options) const;
    FileResult write(const QString &path, const QByteArray &bytes) const
    {
        return write(path, bytes, Options());
    }

    /// Removes temporary files that a killed writer left beside \a path. Call under the lock that guards it.
    void removeStrayTemporaries(const QString &path) const;

private:
    FileLayer *layer_;
};
