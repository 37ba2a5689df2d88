// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/EarlierStates.h"
#include "Platform/Preferences/PreferenceValues.h"

#include <QStringList>
#include <memory>
#include <optional>

/// The application values of one preference domain: `$XDG_CONFIG_HOME/<domain>.plist` (default `~/.config`),
/// written in the binary form, read in either.
///
/// Values set are pending, and seen by copyAppValue(), until appSynchronize() has merged them into what is on
/// disk by then. Bytes that would say the same are not written, so that the last good backup
/// `<domain>.plist.backup` is the last different state; besides it EarlierStates are kept, if there is a
/// place for them. After a failed save the values stay pending and the old bytes stay on disk.
///
/// What is there is never lost to somebody who does not know it:
/// - A file that cannot be parsed, or is too large to be, is kept aside as `<domain>.plist.damaged-<UTC
///   time>`, and the backup takes its place; so does that of a file that is gone, unless a link leads to it.
///   damage() tells of it.
/// - Only where nothing is, neither file nor backup nor folder, is there no domain yet. Anything else that
///   keeps the file from being read (rights, a disk that fails, a home that is not there now, a link that
///   leads nowhere, another user's link, a size over the limit without a good backup, a damaged file that
///   cannot be kept aside now) makes the domain unread: appSynchronize() refuses to save until read() has
///   succeeded.
/// - Whoever set values while there was no file, or while it was unread, did not know those that are there by
///   then. If they replace others the file is kept aside as `<domain>.plist.before-<UTC time>` first.
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
        /// The folder for EarlierStates; none are kept if empty.
        QString statesFolder = {};
        /// Nothing is written, and nothing can be saved: what is damaged stays as it is, for somebody to
        /// replace who tells the user. Without a good backup it makes the domain unread.
        bool isReadOnly = false;
    };

    /// What was the matter with a file whose values were not to be had.
    struct Damage
    {
        enum class Cause {
            /// It is no property list.
            Broken,
            TooLarge,
            /// It is gone, and its backup was left.
            Missing
        };
        Cause cause = Cause::Broken;
        /// In words, with the path.
        QString reason = {};
        /// When the backup was saved whose values are those of the domain now, UTC; invalid if there was none
        /// that could be read: then there are no values.
        QDateTime backup = {};
        /// Where the file is kept, and its backup if that was damaged too; empty while it is in its place.
        QStringList kept = {};
    };

    /// The user's own, with its earlier states in the state folder.
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
    /// pending the same as read(). Fails while the domain is unread.
    Result<> appSynchronize();

    /// Reads what is on disk now, and replaces it if it is damaged; what is pending stays so. No domain yet
    /// is a success.
    Result<> read();

    /// Whether the file is there, as far as is known, and was never read: its values are not those that
    /// copyAppValue() gives.
    bool isUnread() const;

    /// What the last read() or appSynchronize() found to be damaged. If that succeeded the damage is mended;
    /// else, in a domain that is unread, it stands in the way.
    const std::optional<Damage> &damage() const;

    bool hasPendingValues() const;

    /// Copies the file as it stands to `<domain>.plist.before-<UTC time>` because the next save would lose
    /// something of it: values that the reader has no place for, or that it replaces by others on purpose. At
    /// most once for the same content; without a file, and where nothing is written, there is nothing to do.
    Result<> keepAsideCopy(const QString &reason);

    /// All that is kept of other states of the file, however it came to be kept, each content once; the
    /// youngest first. Damaged ones are not among them.
    QList<EarlierStates::State> earlierStates() const;

    QString path() const;

private:
    class Private;
    std::unique_ptr<Private> d_;
};
