// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLock.h"
#include "Platform/PropertyLists/PropertyListDocument.h"

#include <QDateTime>
#include <QStringList>

/// The file of one preference domain, with its backup, what was kept aside of it and its lock.
class PreferencesFile
{
public:
    struct Content
    {
        enum State {
            Missing,
            Good,
            /// Read, and no property list with a dictionary on top.
            Damaged,
            /// Over the size that a reader takes; never read.
            TooLarge,
            /// There, and not to be read now: says nothing about what it holds.
            Unreadable
        };
        State state = Missing;
        QByteArray bytes;
        /// When the file was written, to the millisecond.
        QDateTime modified;
        /// Of a Good one; null if the bytes are those that were known.
        PropertyListDocument::Ptr document;
        QString error;
    };

    PreferencesFile(FileLayer &layer, const QString &path);

    /// Finds the file that the path stands for; the others below need it. Makes the folder, for its owner
    /// only, if \a create.
    Result<> locate(bool create);

    /// Whether locate() failed, if it did, because nothing is there yet: of what the path names only folders
    /// exist, and no link.
    bool isMissing() const;
    /// Whether the path is a symbolic link.
    bool isLink() const;

    const QString &target() const { return target_; }
    /// The files that hold other states of this one: the backup, and the copies that were kept of a good
    /// file.
    QStringList goodStates() const;

    /// \a folder is where locks are, found from the environment if empty.
    Result<FileLock> lock(const QString &folder, int timeout) const;

    /// \a known are bytes known to be good, not parsed again. What a link leads to, and is not there, is
    /// Unreadable: it may be on a disk that is not mounted.
    Content read(const QByteArray &known = {}) const;
    Content readBackup() const;

    /// Keeps the file, which cannot be read, under another name, which is returned: a second name for the
    /// same bytes where possible, else a copy. Once for the same bytes. The same for a backup.
    Result<QString> keepDamagedAside() const;
    Result<QString> keepBackupAside() const;
    /// The same with a copy always, of a file that is good as it stands, and under a name that says so.
    /// Nothing to do without a file.
    Result<> keepCopyAside() const;

    /// Replaces the file; what it held becomes the backup if \a backUp.
    Result<> write(const QByteArray &bytes, bool backUp) const;
    /// Makes the file what readBackup() gave, also as to its time.
    Result<> restore(const Content &backup) const;
    /// Nothing to do is no failure.
    Result<> remove() const { return writer_.remove(target_); }
    Result<> removeBackup() const { return writer_.remove(backup_); }
    void removeStrayTemporaries() const { writer_.removeStrayTemporaries(target_); }

private:
    enum class Aside { Link, Copy };
    Content readFile(const QString &path, const QByteArray &known) const;
    Result<QString> keepAside(const QString &path, const QString &infix, Aside how) const;
    bool holdsTheSame(const QString &path, const QString &other) const;

    FileLayer &layer_;
    DurableFileWriter writer_;
    QString path_;
    QString target_;
    QString backup_;
};
