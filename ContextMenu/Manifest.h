// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"

#include <QMap>
#include <QString>
#include <QStringList>

/// What this plug-in has written into the user's folders, so that exactly that can be removed: a property
/// list in the folder for the state of programs.
///
/// It is saved before a file is written, with what the file is going to hold, and again after: whenever a run
/// is cut short, every file of ours is known, and known by its content.
class Manifest
{
public:
    /// For one file manager.
    struct Entries
    {
        /// By the path of each file: the hashes of the contents that are ours. A file with any other content
        /// was changed by its user.
        QMap<QString, QStringList> files;
        /// By the path of each file that holds what is others' too: the hash of what it was made from, empty
        /// if it was there before us.
        QMap<QString, QString> sharedFiles;
        friend bool operator==(const Entries &, const Entries &) = default;
    };

    /// \a path need not exist: then nothing is registered. What cannot be read counts as that, with a line in
    /// the log. To be called under the lock that keeps others from writing it.
    explicit Manifest(QString path);

    const QString &path() const { return path_; }
    /// Why it could not be read; empty if it could, or if there was none.
    const QString &readError() const { return readError_; }

    bool isRegistered() const { return isRegistered_; }
    /// The names of the file managers that are registered.
    QStringList fileManagers() const { return entries_.keys(); }
    Entries entries(const QString &fileManager) const { return entries_.value(fileManager); }
    void setEntries(const QString &fileManager, const Entries &entries);
    void removeEntries(const QString &fileManager);

    /// Notes what of \a folder and the folders above it is missing, to be removed with what will be in there.
    void noteMissingFolders(const QString &folder);
    /// Removes those of the noted folders that are empty.
    void removeEmptyFolders();

    static QString hashOf(const QByteArray &bytes);

    /// Nothing is written that is there already.
    Result<> save();
    /// The opposite of save(), and of having been registered.
    Result<> remove();

private:
    void read();

    QString path_;
    QString readError_;
    bool isRegistered_ = false;
    QMap<QString, Entries> entries_;
    /// In the order in which they were made.
    QStringList folders_;
    QByteArray saved_;
};
