// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileAttributes.h"

#include <QFile>

#include <cerrno>

namespace {

constexpr char userNamespace[] = "user.";

Result<> failed(const QString &what, const QByteArray &path, int errorNumber)
{
    return Result<>::failure(
        systemError(QStringLiteral("cannot keep %1 of %2").arg(what, QFile::decodeName(path)), errorNumber));
}

/// Runs a call that fills a buffer whose size is not known before, and may have grown when it is: the bytes,
/// or none with errno.
template <typename Call>
std::optional<QByteArray> whole(Call call)
{
    for (;;) {
        const ssize_t size = call(nullptr, 0);
        if (size <= 0)
            return size == 0 ? std::optional(QByteArray()) : std::nullopt;
        QByteArray bytes(size, Qt::Uninitialized);
        const ssize_t filled = call(bytes.data(), static_cast<size_t>(bytes.size()));
        if (filled >= 0) {
            bytes.truncate(filled);
            return bytes;
        }
        if (errno != ERANGE)
            return std::nullopt;
    }
}

/// Attributes of other namespaces than the user's are the system's to give (labels, capabilities); there a
/// refusal is an answer.
bool isRefusal(const QByteArray &name, int errorNumber)
{
    return !name.startsWith(userNamespace) &&
           (errorNumber == EPERM || errorNumber == EACCES || errorNumber == ENOTSUP || errorNumber == EINVAL);
}

Result<> keepExtendedAttributes(FileLayer &layer, const QByteArray &from, int descriptor)
{
    const auto list = whole([&](char *bytes, size_t size) { return layer.listxattr(from, bytes, size); });
    if (!list)
        return errno == ENOTSUP ? Result<>() : failed(QStringLiteral("the attributes"), from, errno);
    for (const QByteArray &name : list->split('\0')) {
        if (name.isEmpty())
            continue;
        const QString what = QStringLiteral("the attribute %1").arg(QFile::decodeName(name));
        const auto value = whole(
            [&](void *bytes, size_t size) { return layer.getxattr(from, name.constData(), bytes, size); });
        if (!value) {
            if (errno == ENODATA || isRefusal(name, errno))
                continue;
            return failed(what, from, errno);
        }
        if (layer.fsetxattr(descriptor, name.constData(), value->constData(),
                            static_cast<size_t>(value->size())) == -1 &&
            !isRefusal(name, errno))
            return failed(what, from, errno);
    }
    return {};
}

/// Gives the file owner and group, as far as this user may: the mode that it may have then.
Result<mode_t> keepOwner(FileLayer &layer, const QByteArray &from, const struct stat &information,
                         int descriptor)
{
    struct stat present = {};
    if (layer.fstat(descriptor, &present) == -1)
        return Result<mode_t>::failure(failed(QStringLiteral("the owner"), from, errno).error);
    mode_t mode = information.st_mode & 07777;
    if (present.st_gid != information.st_gid &&
        layer.fchown(descriptor, static_cast<uid_t>(-1), information.st_gid) == -1) {
        if (errno != EPERM)
            return Result<mode_t>::failure(failed(QStringLiteral("the group"), from, errno).error);
        // Members of the new group had the rights of others until now.
        mode = (mode & ~S_IRWXG) | (mode & S_IRWXG & ((mode & S_IRWXO) << 3));
        mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    }
    if (present.st_uid != information.st_uid &&
        layer.fchown(descriptor, information.st_uid, static_cast<gid_t>(-1)) == -1) {
        if (errno != EPERM)
            return Result<mode_t>::failure(failed(QStringLiteral("the owner"), from, errno).error);
        mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    }
    return mode;
}

Result<> setMode(FileLayer &layer, const QByteArray &from, int descriptor, mode_t mode)
{
    return layer.fchmod(descriptor, mode) == 0 ? Result<>() : failed(QStringLiteral("the mode"), from, errno);
}

} // namespace

Result<> FileAttributes::keep(FileLayer &layer, const QByteArray &from, const struct stat &information,
                              int descriptor)
{
    const Result<mode_t> mode = keepOwner(layer, from, information, descriptor);
    if (!mode)
        return Result<>::failure(mode.error);
    // The attributes first: the new mode may close the file to its owner, and it sets the access list's mask.
    if (Result<> result = keepExtendedAttributes(layer, from, descriptor); !result)
        return result;
    return setMode(layer, from, descriptor, *mode);
}

Result<> FileAttributes::keepRights(FileLayer &layer, const QByteArray &from, const struct stat &information,
                                    int descriptor)
{
    const Result<mode_t> mode = keepOwner(layer, from, information, descriptor);
    return mode ? setMode(layer, from, descriptor, *mode) : Result<>::failure(mode.error);
}
