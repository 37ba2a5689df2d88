// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "BlindDisk.h"

#include <cerrno>
#include <linux/fs.h>
#include <linux/magic.h>

namespace {

QString withoutCase(const QByteArray &name)
{
    return QString::fromUtf8(name).normalized(QString::NormalizationForm_C).toLower();
}

} // namespace

/// The name under which the disk has \a name; that itself if nothing is there.
QByteArray BlindDisk::found(int folder, const char *name)
{
    const auto entries = entriesAt(folder);
    for (const QByteArray &entry : entries.value_or(QList<QByteArray>())) {
        if (withoutCase(entry) == withoutCase(name))
            return entry;
    }
    return name;
}

int BlindDisk::openat(int folder, const char *name, int flags, mode_t mode)
{
    // The reading of a folder begins with the opening of it by this name.
    const bool isFolderItself = QByteArrayView(name) == ".";
    const QByteArray there = isFolderItself ? QByteArray(name) : found(folder, name);
    return FolderLayer::openat(folder, there.constData(), flags, mode);
}

int BlindDisk::mkdirat(int folder, const char *name, mode_t mode)
{
    return FolderLayer::mkdirat(folder, found(folder, name).constData(), mode);
}

int BlindDisk::unlinkat(int folder, const char *name, int flags)
{
    return FolderLayer::unlinkat(folder, found(folder, name).constData(), flags);
}

int BlindDisk::fstatat(int folder, const char *name, struct stat *result, int flags)
{
    const QByteArray there = *name == '\0' ? QByteArray(name) : found(folder, name);
    return FolderLayer::fstatat(folder, there.constData(), result, flags);
}

int BlindDisk::fstatfs(int descriptor, struct statfs *result)
{
    const int status = FolderLayer::fstatfs(descriptor, result);
    if (sign_ == Sign::Type)
        result->f_type = MSDOS_SUPER_MAGIC;
    return status;
}

std::optional<int> BlindDisk::flagsOf(int folder)
{
    const std::optional<int> flags = FolderLayer::flagsOf(folder);
    if (sign_ == Sign::Flag)
        return flags.value_or(0) | FS_CASEFOLD_FL;
    errno = ENOTTY;
    return std::nullopt;
}
