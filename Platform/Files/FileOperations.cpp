// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileOperations.h"

#include "Platform/Files/FileLayer.h"

#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

fs::path native(const QByteArray &path)
{
    return path.toStdString();
}

QByteArray bytes(const fs::path &path)
{
    return QByteArray::fromStdString(path.native());
}

Result<> failed(const char *doing, const QByteArray &path, int errorNumber)
{
    return Result<>::failure(systemError(
        QStringLiteral("cannot %1 %2").arg(QLatin1StringView(doing), QFile::decodeName(path)), errorNumber));
}

/// Copies what \a from is to \a to, where nothing is. What has been copied when it fails stays.
Result<> copyTree(const fs::path &from, const fs::path &to)
{
    std::error_code error;
    const fs::file_status status = fs::symlink_status(from, error);
    switch (status.type()) {
    case fs::file_type::symlink:
        fs::copy_symlink(from, to, error);
        break;
    case fs::file_type::regular:
        fs::copy_file(from, to, error);
        if (!error)
            fs::permissions(to, (status.permissions() & fs::perms::all) | fs::perms::owner_write, error);
        break;
    case fs::file_type::directory: {
        fs::create_directory(to, error);
        fs::directory_iterator entry;
        if (!error)
            entry = fs::directory_iterator(from, error);
        for (; !error && entry != fs::end(entry); entry.increment(error)) {
            if (Result<> copied = copyTree(entry->path(), to / entry->path().filename()); !copied)
                return copied;
        }
        if (!error)
            fs::permissions(to, (status.permissions() & fs::perms::all) | fs::perms::owner_all, error);
        break;
    }
    default:
        // Devices, fifos and sockets are not for copying.
        if (!error)
            error = std::make_error_code(std::errc::operation_not_supported);
    }
    return error ? failed("copy", bytes(from), error.value()) : Result<>();
}

} // namespace

bool FileOperations::exists(const QByteArray &path)
{
    struct stat information = {};
    return ::lstat(path.constData(), &information) == 0;
}

Result<> FileOperations::createDirectory(const QByteArray &path, mode_t mode)
{
    if (::mkdir(path.constData(), mode) == -1)
        return failed("make the folder", path, errno);
    return {};
}

Result<> FileOperations::removeItem(const QByteArray &path)
{
    std::error_code error;
    const std::uintmax_t removed = fs::remove_all(native(path), error);
    if (error)
        return failed("remove", path, error.value());
    return removed == 0 ? failed("remove", path, ENOENT) : Result<>();
}

Result<> FileOperations::copyItem(const QByteArray &from, const QByteArray &to)
{
    if (exists(to))
        return failed("create", to, EEXIST);
    // In a folder of its own beside the target first, so that what is found there is never half of it.
    const QByteArray name = to.mid(to.lastIndexOf('/') + 1);
    QByteArray folder = to.chopped(name.size()) + ".quenby-copy-XXXXXX";
    if (!::mkdtemp(folder.data()))
        return failed("create", to, errno);
    const fs::path copy = native(folder) / native(name);
    Result<> result = copyTree(native(from), copy);
    if (result && ::rename(copy.c_str(), to.constData()) == -1)
        result = failed("create", to, errno);
    std::error_code ignored;
    fs::remove_all(native(folder), ignored);
    return result;
}
