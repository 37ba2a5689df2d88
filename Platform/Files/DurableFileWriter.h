// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

class FileLayer;

/// Replaces a file's content so that after a crash, a full disk or a kill at any moment the path holds the
/// old bytes or the new ones, never others: temporary file in the folder of the resolved target (a symbolic
/// link stays a link), mode, owner and extended attributes of the old file kept, every write checked, fsync,
/// rename, fsync of the folder. Used for the preference domain, preset files and login items.
///
/// A symbolic link is followed only if it belongs to the user or to root; another user's fails the call. A
/// file that its user may not write is not replaced, though the folder would allow it. Where the system does
/// not let the owner be kept the file becomes the user's own, and opens itself to nobody by that.
class DurableFileWriter
{
public:
    struct Options
    {
        /// Mode of a file that did not exist, whatever the umask.
        int newFileMode = 0600;
        /// Keep the bytes being replaced under this path (a hard link where possible, else a copy); none if
        /// empty. In the folder of the resolved target.
        QString backupPath = {};
        /// When the content was made, which becomes the time of the file's last change where the file system
        /// allows it; the present if invalid.
        QDateTime modified = {};
    };

    /// \a layer stands for the system calls and is the real one if null; not owned.
    explicit DurableFileWriter(FileLayer *layer = nullptr);

    /// On failure the path holds the old bytes, unless the reason is that the folder could not be
    /// synchronised after all else was done.
    Result<> write(const QString &path, const QByteArray &bytes, const Options &options) const;
    Result<> write(const QString &path, const QByteArray &bytes) const
    {
        return write(path, bytes, Options());
    }

    /// Writes a file that is given away: it takes the name \a path, and is new if the name is free. The umask
    /// decides who may read it, as with any document. Of a file of the user's own that it replaces it keeps
    /// owner and mode. A symbolic link is replaced and never followed, whosever it is: in a folder that
    /// several users share, it may lead anywhere. The rest is as with write().
    Result<> give(const QString &path, const QByteArray &bytes) const;

    /// Writes a new file with that \a mode, whatever the umask. False if something has the name \a path,
    /// which stays as it is, be it a link that leads nowhere.
    Result<bool> writeIfFree(const QString &path, const QByteArray &bytes, int mode) const;

    /// Copies \a from to \a to, which must not exist: whole and durable, or not at all.
    Result<> copy(const QString &from, const QString &to) const;

    /// Makes \a path a symbolic link with the text \a text, in place of the link or file that it may be.
    Result<> makeSymbolicLink(const QString &path, const QByteArray &text) const;

    /// Renames \a from to \a to, in the same folder, in place of what may be there. Takes no room on the
    /// disk.
    Result<> rename(const QString &from, const QString &to) const;

    /// Removes the file \a path, of a symbolic link the link. Nothing to do is no failure.
    Result<> remove(const QString &path) const;

    /// Makes the folder, and what is missing of the folders above it, for their owner only; as durable as the
    /// files that will be written there. Nothing to do is no failure.
    Result<> makeFolder(const QString &path) const;

    /// The file that \a path stands for: symbolic links followed, the last one also where it leads to nothing
    /// yet. Fails if the folder does not exist or cannot be reached, or if the path is another user's link.
    Result<QString> resolve(const QString &path) const;

    /// Removes temporary files that a killed writer left beside \a path. Call under the lock that guards it.
    void removeStrayTemporaries(const QString &path) const;

private:
    FileLayer &layer_;
};
