// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptFile.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/FileDescriptor.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Script", text);
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    const auto isSameTime = [](const timespec &left, const timespec &right) {
        return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
    };
    return one.st_size == other.st_size && isSameTime(one.st_mtim, other.st_mtim) &&
           isSameTime(one.st_ctim, other.st_ctim);
}

} // namespace

Result<ScriptFile> ScriptFile::read(const QString &path)
{
    FileLayer &layer = FileLayer::real();
    const FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_RDONLY | O_NONBLOCK | O_NOFOLLOW));
    struct stat before = {};
    if (!file.isOpen() || layer.fstat(file.get(), &before) == -1)
        return Result<ScriptFile>::failure(qt_error_string(errno));
    // That very file, whatever the path has come to mean by now.
    const QByteArray opened = QByteArray("/proc/self/fd/") + QByteArray::number(file.get());
    const Result<QByteArray> bytes = BoundedFile::read(opened, largest);
    if (!bytes)
        return Result<ScriptFile>::failure(bytes.error);
    // Half of one version and half of another is none that anybody made.
    struct stat after = {};
    if (layer.fstat(file.get(), &after) == -1 || !isSameFile(before, after))
        return Result<ScriptFile>::failure(tr("it is being written to"));
    return ScriptFile{*bytes, ::eaccess(opened.constData(), X_OK) == 0};
}
