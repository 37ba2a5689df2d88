// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <sys/stat.h>
#include <sys/types.h>

/// The system calls that durable saving rests on, one function each, with the meaning, the result and the
/// errno of the call of that name. A call that a signal interrupts is made again. This class makes the real
/// calls; tests override one to see it fail.
class FileLayer
{
public:
    FileLayer() = default;
    FileLayer(const FileLayer &) = delete;
    FileLayer &operator=(const FileLayer &) = delete;
    virtual ~FileLayer();

    /// The layer that makes the real calls.
    static FileLayer &real();

    /// Descriptors are always opened with O_CLOEXEC.
    virtual int open(const QByteArray &path, int flags, mode_t mode = 0);
    virtual int close(int descriptor);
    virtual ssize_t read(int descriptor, void *buffer, size_t size);
    virtual ssize_t write(int descriptor, const void *buffer, size_t size);
    virtual ssize_t pwrite(int descriptor, const void *buffer, size_t size, off_t place);
    virtual int fsync(int descriptor);
    virtual int flock(int descriptor, int operation);

    virtual int stat(const QByteArray &path, struct stat *result);
    virtual int lstat(const QByteArray &path, struct stat *result);
    virtual int fstat(int descriptor, struct stat *result);
    /// With the effective user's rights.
    virtual int access(const QByteArray &path, int mode);
    virtual int fchmod(int descriptor, mode_t mode);
    virtual int fchown(int descriptor, uid_t owner, gid_t group);
    /// The times of the last access and of the last change of content.
    virtual int futimens(int descriptor, const timespec (&times)[2]);

    virtual ssize_t listxattr(const QByteArray &path, char *list, size_t size);
    virtual ssize_t getxattr(const QByteArray &path, const char *name, void *value, size_t size);
    virtual int fsetxattr(int descriptor, const char *name, const void *value, size_t size);

    virtual int rename(const QByteArray &from, const QByteArray &to);
    /// renameat2() with RENAME_NOREPLACE.
    virtual int renameToFree(const QByteArray &from, const QByteArray &to);
    virtual int link(const QByteArray &existing, const QByteArray &created);
    virtual int symlink(const QByteArray &text, const QByteArray &created);
    virtual int unlink(const QByteArray &path);
    virtual int mkdir(const QByteArray &path, mode_t mode);

    /// The text of the symbolic link \a name in an open folder, or AT_FDCWD; with an empty name, of the one
    /// that \a folder is. None, with errno, on failure.
    virtual std::optional<QByteArray> readlinkat(int folder, const char *name);
    /// The path without symbolic links, "." and ".."; none, with errno, on failure.
    virtual std::optional<QByteArray> realpath(const QByteArray &path);
    /// The names in a folder but "." and ".."; none, with errno, on failure.
    virtual std::optional<QList<QByteArray>> entries(const QByteArray &folder);
};

/// "doing what: reason", the reason being that of \a errorNumber.
QString systemError(const QString &doing, int errorNumber);
