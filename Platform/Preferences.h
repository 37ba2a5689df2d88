// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/BinaryPropertyListWriter.h"
#include "Platform/DurableFileWriter.h"
#include "Platform/PropertyListDocument.h"

#include <QVariant>
#include <memory>

/// A value already encoded for the domain: a snapshot that is written as it is.
struct EncodedPreference
{
    BinaryPropertyListWriter writer;
    BinaryPropertyListWriter::Ref top = 0;
};

/// The application values of one preference domain: `$XDG_CONFIG_HOME/<domain>.plist` (default `~/.config`),
/// written in the binary form, read in either.
///
/// Values set are pending, and seen by copyAppValue(), until appSynchronize() has merged them into what is on
/// disk by then. A file that cannot be parsed is kept aside as `<domain>.plist.damaged-<UTC time>` before
/// anything is written in its place, and the last good backup `<domain>.plist.backup` is read instead. A file
/// that could not be read when its values were asked for is kept aside likewise before the first save:
/// whoever sets values then does not know those that they replace. After a failed save the values stay
/// pending and the old bytes stay on disk.
class Preferences
{
public:
    struct Options
    {
        /// The folder that holds the domain's file; found from the environment if empty.
        QString folder = {};
        /// The folder for the lock; found from the environment if empty.
        QString lockFolder = {};
        /// Stands for the system calls; the real ones if null; not owned.
        FileLayer *layer = nullptr;
        /// How long a save may wait for another process's save, in milliseconds.
        int lockTimeout = 1000;
    };

    explicit Preferences(const QString &domain);
    Preferences(const QString &domain, const Options &options);
    ~Preferences();
    Preferences(const Preferences &) = delete;
    Preferences &operator=(const Preferences &) = delete;

    /// The value of a key: pending if set, else as of the last appSynchronize() (the first call reads). An
    /// invalid QVariant when there is none.
    QVariant copyAppValue(const QString &key) const;

    /// The same without materialising it. The node is valid as long as \a keepAlive is held.
    PropertyListNode copyAppNode(const QString &key, PropertyListDocument::Ptr *keepAlive) const;

    /// Sets a value for the next appSynchronize(); an invalid QVariant removes the key.
    void setAppValue(const QString &key, const QVariant &value);
    void setAppValue(const QString &key, EncodedPreference value);

    /// Merges what is pending into what is on disk now, under a lock, and writes it durably; with nothing
    /// pending just reads what is on disk now.
    Result<> appSynchronize();

    bool hasPendingValues() const;

    /// Copies the file as it stands to `<domain>.plist.damaged-<UTC time>` because a reader met values in it
    /// that the next save would lose. At most once for the same content.
    Result<> keepAsideCopy(const QString &reason);

    QString path() const;

private:
    class Private;
    std::unique_ptr<Private> d_;
};
