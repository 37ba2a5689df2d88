// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FolderLayer.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <optional>

namespace Creation {

/// A content file or a script, opened for reading by the name that a preset gives it. The name comes from
/// whoever made the preset: it leads from the folder of such files downwards only. A symbolic link counts as
/// the user's own word and may lead anywhere, if the user or root owns it and nobody else can write the
/// folder it is in; any other one is refused. Nothing but a regular file is ever opened, whatever is
/// exchanged meanwhile, so that no pipe or device holds the program up.
class SupportFile
{
public:
    enum class Kind {
        File,
        /// A folder is not opened for reading, only found.
        FileOrFolder,
    };

    /// \a name is relative to \a folder.
    SupportFile(FolderLayer &layer, const QByteArray &folder, const QString &name, Kind kind = Kind::File);

    bool isOpen() const { return file_.has_value(); }
    int descriptor() const { return file_->get(); }
    bool isFolder() const { return S_ISDIR(information_.st_mode); }
    /// Where it is now, without links.
    QString path() const;
    /// Of what was opened.
    const struct stat &information() const { return information_; }

    /// Why it is not open: as errno, and as words of which the file is the subject.
    int error() const { return error_; }
    QString problem() const;

private:
    /// These return errno, 0 for success.
    int find(const QByteArray &folder, const QString &name);
    int enter(FileDescriptor folder);
    int step(const QByteArray &part);
    int follow(const FileDescriptor &link, const struct stat &information);
    int openLast(const QByteArray &part);
    int takeFolder(FileDescriptor folder, const struct stat &information);
    int refuse(int error, const QString &reason);

    FolderLayer &layer_;
    const Kind kind_;
    /// Where the way has led so far, and what is left of it, the next part last.
    std::optional<FileDescriptor> folder_;
    struct stat folderInformation_ = {};
    QByteArrayList parts_;
    int followed_ = 0;

    std::optional<FileDescriptor> file_;
    struct stat information_ = {};
    QString reason_;
    int error_;
};

} // namespace Creation
