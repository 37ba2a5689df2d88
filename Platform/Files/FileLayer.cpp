// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileLayer.h"

#include "Platform/Files/SystemCalls.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

struct MemoryReleaser
{
    void operator()(char *memory) const { std::free(memory); }
};

} // namespace

FileLayer::~FileLayer() = default;

FileLayer &FileLayer::real()
{
    static FileLayer layer;
    return layer;
}

int FileLayer::open(const QByteArray &path, int flags, mode_t mode)
{
    return untilNotInterrupted([&] { return ::open(path.constData(), flags | O_CLOEXEC, mode); });
}

int FileLayer::close(int descriptor)
{
    // Never again after a signal: the descriptor is closed by then and may be another thread's.
    const int result = ::close(descriptor);
    return result == -1 && errno == EINTR ? 0 : result;
}

ssize_t FileLayer::read(int descriptor, void *buffer, size_t size)
{
    return untilNotInterrupted([&] { return ::read(descriptor, buffer, size); });
}

ssize_t FileLayer::write(int descriptor, const void *buffer, size_t size)
{
    return untilNotInterrupted([&] { return ::write(descriptor, buffer, size); });
}

ssize_t FileLayer::pwrite(int descriptor, const void *buffer, size_t size, off_t place)
{
    return untilNotInterrupted([&] { return ::pwrite(descriptor, buffer, size, place); });
}

int FileLayer::fsync(int descriptor)
{
    return untilNotInterrupted([&] { return ::fsync(descriptor); });
}

int FileLayer::flock(int descriptor, int operation)
{
    return untilNotInterrupted([&] { return ::flock(descriptor, operation); });
}

int FileLayer::stat(const QByteArray &path, struct stat *result)
{
    return ::stat(path.constData(), result);
}

int FileLayer::lstat(const QByteArray &path, struct stat *result)
{
    return ::lstat(path.constData(), result);
}

int FileLayer::fstat(int descriptor, struct stat *result)
{
    return ::fstat(descriptor, result);
}

int FileLayer::access(const QByteArray &path, int mode)
{
    return ::faccessat(AT_FDCWD, path.constData(), mode, AT_EACCESS);
}

int FileLayer::fchmod(int descriptor, mode_t mode)
{
    return untilNotInterrupted([&] { return ::fchmod(descriptor, mode); });
}

int FileLayer::fchown(int descriptor, uid_t owner, gid_t group)
{
    return untilNotInterrupted([&] { return ::fchown(descriptor, owner, group); });
}

int FileLayer::futimens(int descriptor, const timespec (&times)[2])
{
    return ::futimens(descriptor, times);
}

ssize_t FileLayer::listxattr(const QByteArray &path, char *list, size_t size)
{
    return ::listxattr(path.constData(), list, size);
}

ssize_t FileLayer::getxattr(const QByteArray &path, const char *name, void *value, size_t size)
{
    return ::getxattr(path.constData(), name, value, size);
}

int FileLayer::fsetxattr(int descriptor, const char *name, const void *value, size_t size)
{
    return ::fsetxattr(descriptor, name, value, size, 0);
}

int FileLayer::rename(const QByteArray &from, const QByteArray &to)
{
    return ::rename(from.constData(), to.constData());
}

int FileLayer::renameToFree(const QByteArray &from, const QByteArray &to)
{
    return ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
}

int FileLayer::link(const QByteArray &existing, const QByteArray &created)
{
    return ::link(existing.constData(), created.constData());
}

int FileLayer::symlink(const QByteArray &text, const QByteArray &created)
{
    return ::symlink(text.constData(), created.constData());
}

int FileLayer::unlink(const QByteArray &path)
{
    return ::unlink(path.constData());
}

int FileLayer::mkdir(const QByteArray &path, mode_t mode)
{
    return ::mkdir(path.constData(), mode);
}

std::optional<QByteArray> FileLayer::readlinkat(int folder, const char *name)
{
    return linkText(folder, name);
}

std::optional<QByteArray> FileLayer::realpath(const QByteArray &path)
{
    const std::unique_ptr<char, MemoryReleaser> resolved(::realpath(path.constData(), nullptr));
    if (!resolved)
        return std::nullopt;
    return QByteArray(resolved.get());
}

std::optional<QList<QByteArray>> FileLayer::entries(const QByteArray &folder)
{
    const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(folder.constData()));
    if (!directory)
        return std::nullopt;
    return namesIn(directory.get());
}

QString systemError(const QString &doing, int errorNumber)
{
    return QStringLiteral("%1: %2").arg(doing, qt_error_string(errorNumber));
}
