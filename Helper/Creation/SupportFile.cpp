// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/SupportFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace Creation {

namespace {

/// As many as the system follows.
constexpr int mostLinks = 40;

constexpr int success = 0;

const QString noFile = QStringLiteral("is no file");

bool isTrusted(uid_t owner)
{
    return owner == 0 || owner == ::geteuid();
}

/// Whether nobody but the user and root can put something into the folder. An access control list that lets
/// others do so shows in the bits of the group.
bool isClosedToOthers(const struct stat &folder)
{
    return isTrusted(folder.st_uid) && (folder.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace

SupportFile::SupportFile(FolderLayer &layer, const QByteArray &folder, const QString &name, Kind kind)
    : layer_(layer)
    , kind_(kind)
    , error_(find(folder, name))
{
    folder_.reset();
}

QString SupportFile::path() const
{
    return QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor()));
}

QString SupportFile::problem() const
{
    return reason_.isEmpty() ? systemError(QStringLiteral("cannot be used"), error_) : reason_;
}

int SupportFile::refuse(int error, const QString &reason)
{
    reason_ = reason;
    return error;
}

int SupportFile::find(const QByteArray &folder, const QString &name)
{
    if (name.contains(QChar(u'\0')) || !name.isValidUtf16())
        return refuse(EINVAL, QStringLiteral("has a name that no file has"));
    parts_ = name.toUtf8().split('/');
    if (parts_.contains("..") || parts_.contains(QByteArray()))
        return refuse(EINVAL, QStringLiteral("is not named by a path within its folder"));
    std::reverse(parts_.begin(), parts_.end());
    int error = enter({layer_, layer_.open(folder, O_PATH | O_DIRECTORY)});
    while (error == success && !file_)
        error =
            parts_.isEmpty() ? takeFolder(std::move(*folder_), folderInformation_) : step(parts_.takeLast());
    return error;
}

int SupportFile::enter(FileDescriptor folder)
{
    if (!folder.isOpen() || layer_.fstat(folder.get(), &folderInformation_) == -1)
        return errno;
    folder_.emplace(std::move(folder));
    return success;
}

int SupportFile::step(const QByteArray &part)
{
    FileDescriptor next(layer_, layer_.openat(folder_->get(), part.constData(), O_PATH | O_NOFOLLOW));
    struct stat information = {};
    if (!next.isOpen() || layer_.fstat(next.get(), &information) == -1)
        return errno;
    if (S_ISLNK(information.st_mode))
        return follow(next, information);
    if (S_ISDIR(information.st_mode) && !parts_.isEmpty())
        return enter(std::move(next));
    if (S_ISDIR(information.st_mode) && kind_ == Kind::FileOrFolder)
        return takeFolder(std::move(next), information);
    if (!parts_.isEmpty())
        return ENOTDIR;
    // Only now: to open a device may do something.
    return S_ISREG(information.st_mode) ? openLast(part) : refuse(ESTALE, noFile);
}

int SupportFile::takeFolder(FileDescriptor folder, const struct stat &information)
{
    if (kind_ == Kind::File)
        return EISDIR;
    information_ = information;
    file_.emplace(std::move(folder));
    return success;
}

int SupportFile::openLast(const QByteArray &part)
{
    FileDescriptor file(layer_,
                        layer_.openat(folder_->get(), part.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen() || layer_.fstat(file.get(), &information_) == -1)
        return errno;
    if (!S_ISREG(information_.st_mode))
        return refuse(ESTALE, noFile);
    file_.emplace(std::move(file));
    return success;
}

int SupportFile::follow(const FileDescriptor &link, const struct stat &information)
{
    if (!isTrusted(information.st_uid) || !isClosedToOthers(folderInformation_))
        return refuse(ELOOP, QStringLiteral("is reached by a link that another user may have made"));
    if (++followed_ > mostLinks)
        return ELOOP;
    const auto text = layer_.readlinkat(link.get(), "");
    if (!text)
        return errno;
    QByteArrayList parts = text->split('/');
    parts.removeAll(QByteArray());
    while (!parts.isEmpty())
        parts_.append(parts.takeLast());
    return text->startsWith('/') ? enter({layer_, layer_.open("/", O_PATH | O_DIRECTORY)}) : success;
}

} // namespace Creation
