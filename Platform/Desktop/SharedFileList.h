// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/DesktopEntry.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLock.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

class StartedProgram;

/// The list of what the user's session opens at login: the folder `autostart` of the configuration folder,
/// one desktop entry a file, as every desktop reads it. Nothing is kept: what the list says is what is on
/// disk now. Those who change the list through this class do so one after the other, by a lock in the runtime
/// folder; other programs write files of their own.
///
/// An entry that this class writes carries the address of its file under a key of its own, and the number of
/// its place. The entries of other programs are part of the list too, before all that have a number, and are
/// never written. What is no entry (a folder, broken syntax, a file without end) is not part of the list, nor
/// is an entry that is switched off (`Hidden=true`, or `X-GNOME-Autostart-enabled=false` as the settings of
/// some desktops write it): to those who start the entries it is as good as removed.
class SharedFileList
{
public:
    class Item
    {
    public:
        /// What its file is called.
        QString fileName() const { return fileName_; }

    private:
        friend class SharedFileList;

        QString fileName_;
        /// The address under our own key; not valid in the entries of others.
        QUrl url_;
        /// What the entry starts, a path or a name to be looked up; empty if that cannot be told.
        QByteArray program_;
        qlonglong place_ = 0;
        bool isHidden_ = false;
        /// All that its file holds.
        QByteArray bytes_;
    };

    /// The list of this user's session; none if there is no home to have it.
    static std::optional<SharedFileList> create();
    /// The list in \a folder, which need not exist yet; none if something else is in its place.
    static std::optional<SharedFileList> create(const QString &folder);

    /// Appends \a url, of an application bundle or of a program, as the last entry; its path may be any
    /// bytes. An entry that carries this address already is written anew and moved to the end, and active
    /// again if it was switched off (`Hidden` and `X-GNOME-Autostart-enabled` go): there is never a second
    /// one. So is an active entry that carries the address of a file of the same name which is no longer
    /// there, as it was moved. That of a copy which is still there stays, and the session starts both. What
    /// others put into the entry (keys that this class does not write, comments, groups, and in the command
    /// line what stands beside the program, where that is an argument of its own) stays.
    ///
    /// An application need not be fit to be started now; its entry starts nothing until it is. Its entry has
    /// the name, the comment and the icon that its information names (`CFBundleDisplayName`,
    /// `CFBundleGetInfoString`, `CFBundleIconFile`), else the name of its file alone. The entry's file is
    /// called after the application's identifier (`CFBundleIdentifier`); one that an earlier version wrote
    /// under another name is replaced.
    Result<> insertItemURL(const QUrl &url) const;

    /// Has the active entry of a file of the same name which is no longer there, and so would start nothing,
    /// start \a url; it changes in nothing else (its file is renamed if its name was made of the old path),
    /// and goes if \a url has an active one. An entry of \a url that is switched off stays so, and the other
    /// stays as it is. The entry that an earlier version wrote for \a url under another name is renamed. If
    /// there is one of the present name, too, only one is left: the active one, of two that are alike that of
    /// the present name. Entries of other programs, and of other files that are there, are left alone.
    Result<> replaceOutdated(const QUrl &url) const;

    /// In the order of the list: by number of place, then by file name.
    QList<Item> copySnapshot() const;

    /// The file that \a item stands for: that whose address it carries, else the program that it starts. None
    /// if it does not exist.
    std::optional<QUrl> resolve(const Item &item) const;

    /// Deletes the entry's file, of a symbolic link the link. Its absence is no failure.
    Result<> remove(const Item &item) const;

private:
    explicit SharedFileList(QString folder)
        : folder_(std::move(folder))
    {
    }

    QString in(const QString &name) const { return folder_ + u'/' + name; }
    /// Held from reading the list until it is changed.
    Result<FileLock> acquireLock() const;
    /// Everything that is an entry, switched off or not, in no order.
    QList<Item> entries() const;
    std::optional<Item> read(const QString &fileName) const;
    /// Whether \a item stands for a file that was moved to \a address.
    bool isMovedTo(const Item &item, const QUrl &address) const;
    std::optional<QString> unusedFileName(const QString &name) const;
    /// The reason where that gives none.
    QString noNameIsLeft() const { return QStringLiteral("no name is left for an entry in %1").arg(folder_); }
    /// A path by which whoever reads entries finds \a program; it leads through a link if need be.
    Result<> makeReachable(const QByteArray &program, const QString &name, QByteArray *reachable) const;
    /// By which the entry that starts \a started differs from others.
    Result<QList<DesktopEntry::Change>> startingWith(const StartedProgram &started,
                                                     const QUrl &address) const;
    /// Makes \a changes to the entry of \a address: the one of \a replaced that has its name, else one that
    /// the user named, or else a new one, which takes over from the first of them. The others go.
    Result<> write(const StartedProgram &started, const QUrl &address, const QList<Item> &replaced,
                   QList<DesktopEntry::Change> changes) const;
    /// Removes the files of \a items but \a kept, and the links of those that do not have \a address.
    Result<> discard(const QList<Item> &items, const QUrl &address, const QString &kept = {}) const;
    void removeLinks(const Item &item) const;

    QString folder_;
};
