// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/DurableFileWriter.h"

#include "Platform/Files/FileAttributes.h"
#include "Platform/Files/FileDescriptor.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// As many links in a row as the kernel follows.
constexpr int maximumLinks = 40;
constexpr int maximumTemporaryNames = 100;
constexpr qsizetype copyChunk = qsizetype(256) * 1024;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
/// What a program asks for when it makes a document; the umask takes from it what it does.
constexpr mode_t asUsual = ownerOnly | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash == -1 ? QByteArray(".") : path.left(std::max<qsizetype>(slash, 1));
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

Result<> failed(const char *doing, const QByteArray &path, int errorNumber)
{
    return Result<>::failure(systemError(
        QStringLiteral("cannot %1 %2").arg(QLatin1StringView(doing), QFile::decodeName(path)), errorNumber));
}

/// How the temporary files for \a target begin. Of fixed length, so that a name as long as the file system
/// allows can be saved too.
QByteArray temporaryPrefix(const QByteArray &target)
{
    const QByteArray hash = QCryptographicHash::hash(nameOf(target), QCryptographicHash::Sha1);
    return ".quenby-" + hash.toHex().left(16) + '-';
}

/// For what is made in one step, and fails where something is.
QByteArray randomTemporaryName(const QByteArray &target)
{
    return joined(folderOf(target),
                  temporaryPrefix(target) + QByteArray::number(QRandomGenerator::global()->generate64(), 16));
}

/// A new file in the folder of \a target, removed again unless it was moved. The umask takes from \a mode
/// what it does.
class TemporaryFile
{
public:
    TemporaryFile(FileLayer &layer, const QByteArray &target, mode_t mode = ownerOnly)
        : layer_(layer)
        , path_(joined(folderOf(target), temporaryPrefix(target)))
        , file_(layer, create(mode))
    {
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        if (exists_)
            layer_.unlink(path_);
    }

    bool exists() const { return exists_; }
    const QByteArray &path() const { return path_; }
    int descriptor() const { return file_.get(); }

    Result<> append(const char *bytes, qsizetype size)
    {
        while (size > 0) {
            const ssize_t written = layer_.write(descriptor(), bytes, static_cast<size_t>(size));
            if (written <= 0)
                return failed("write", path_, written == 0 ? EIO : errno);
            bytes += written;
            size -= written;
        }
        return {};
    }

    /// Nothing of the file is left to be written later, when nobody could be told of a failure.
    Result<> finish()
    {
        if (layer_.fsync(descriptor()) == -1)
            return failed("synchronise", path_, errno);
        if (file_.close() == -1)
            return failed("close", path_, errno);
        return {};
    }

    void setModified(const QDateTime &modified)
    {
        const timespec time{static_cast<time_t>(modified.toSecsSinceEpoch()),
                            modified.time().msec() * 1'000'000L};
        layer_.futimens(descriptor(), {time, time});
    }

    Result<> moveTo(const QByteArray &target)
    {
        if (layer_.rename(path_, target) == -1)
            return failed("rename the new file to", target, errno);
        exists_ = false;
        return {};
    }

    /// As moveTo(), but fails with errno, which is EEXIST, where something has that name.
    bool moveToFree(const QByteArray &target)
    {
        exists_ = layer_.renameToFree(path_, target) == -1;
        if (!exists_ || errno != EINVAL)
            return !exists_;
        // Not on this file system. A link takes a free name only, too; the other name goes with this object.
        if (layer_.link(path_, target) == 0)
            return true;
        if (errno == EEXIST)
            return false;
        // No links either: nobody can do better than look.
        struct stat present = {};
        if (layer_.lstat(target, &present) == 0) {
            errno = EEXIST;
            return false;
        }
        exists_ = layer_.rename(path_, target) == -1;
        return !exists_;
    }

private:
    int create(mode_t mode)
    {
        const QByteArray prefix = path_;
        int descriptor = -1;
        for (int attempt = 0; attempt < maximumTemporaryNames; ++attempt) {
            path_ = prefix + QByteArray::number(QRandomGenerator::global()->generate64(), 16);
            descriptor = layer_.open(path_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
            if (descriptor != -1 || errno != EEXIST)
                break;
        }
        exists_ = descriptor != -1;
        return descriptor;
    }

    FileLayer &layer_;
    QByteArray path_;
    bool exists_ = false;
    FileDescriptor file_;
};

/// What was renamed or made is found again after a power failure only when its folder has been written.
Result<> synchroniseFolder(FileLayer &layer, const QByteArray &folder)
{
    FileDescriptor descriptor(layer, layer.open(folder, O_RDONLY | O_DIRECTORY));
    if (!descriptor.isOpen()) {
        // A folder may be writable and not readable.
        return errno == EACCES ? Result<>() : failed("open the folder", folder, errno);
    }
    // Some file systems have nothing to synchronise here, and say so in either way.
    if (layer.fsync(descriptor.get()) == -1 && errno != EINVAL && errno != ENOTSUP)
        return failed("synchronise the folder", folder, errno);
    return {};
}

Result<> makeFolder(FileLayer &layer, const QByteArray &folder)
{
    struct stat information = {};
    if (layer.stat(folder, &information) == 0)
        return {};
    const QByteArray above = folderOf(folder);
    if (errno == ENOENT && above != folder) {
        if (Result<> result = makeFolder(layer, above); !result)
            return result;
    }
    // Another process may have made it meanwhile, and not have come to synchronise it.
    if (layer.mkdir(folder, S_IRWXU) == -1 && errno != EEXIST)
        return failed("make the folder", folder, errno);
    return synchroniseFolder(layer, above);
}

/// Fills \a copy with the bytes and the attributes of the file \a from.
Result<> fillCopy(FileLayer &layer, const QByteArray &from, TemporaryFile &copy)
{
    FileDescriptor source(layer, layer.open(from, O_RDONLY | O_NONBLOCK));
    struct stat information = {};
    if (!source.isOpen() || layer.fstat(source.get(), &information) == -1)
        return failed("open", from, errno);
    QByteArray chunk(copyChunk, Qt::Uninitialized);
    for (;;) {
        const ssize_t size = layer.read(source.get(), chunk.data(), static_cast<size_t>(chunk.size()));
        if (size == -1)
            return failed("read", from, errno);
        if (size == 0)
            break;
        if (Result<> result = copy.append(chunk.constData(), size); !result)
            return result;
    }
    if (Result<> result = FileAttributes::keep(layer, from, information, copy.descriptor()); !result)
        return result;
    return copy.finish();
}

/// Makes \a backup hold what \a target holds, and never less than that or than it held before.
Result<> keepBackup(FileLayer &layer, const QByteArray &target, const QByteArray &backup)
{
    const QByteArray linked = randomTemporaryName(target);
    if (layer.link(target, linked) == 0) {
        const int renamed = layer.rename(linked, backup);
        const int errorNumber = errno;
        // Nothing is renamed where both names are the same file already; then this one is left over.
        layer.unlink(linked);
        return renamed == 0 ? Result<>() : failed("rename the old file to", backup, errorNumber);
    }

    // No hard links here, or none for this file.
    TemporaryFile copy(layer, target);
    if (!copy.exists())
        return failed("create", copy.path(), errno);
    if (Result<> result = fillCopy(layer, target, copy); !result)
        return result;
    return copy.moveTo(backup);
}

/// See DurableFileWriter::resolve().
Result<QByteArray> resolved(FileLayer &layer, const QByteArray &path)
{
    using Target = Result<QByteArray>;
    QByteArray current = path;
    for (int links = 0; links < maximumLinks; ++links) {
        // What is asked is answered by one and the same link, whatever takes its name meanwhile.
        const FileDescriptor found(layer, layer.open(current, O_PATH | O_NOFOLLOW));
        struct stat information = {};
        if (found.isOpen() ? layer.fstat(found.get(), &information) == -1 : errno != ENOENT)
            return Target::failure(failed("examine", current, errno).error);
        if (!found.isOpen() || !S_ISLNK(information.st_mode)) {
            // No link, or nothing at all: its folder decides.
            const std::optional<QByteArray> folder = layer.realpath(folderOf(current));
            return folder ? Target(joined(*folder, nameOf(current)))
                          : Target::failure(failed("find the folder of", current, errno).error);
        }
        // Another user would decide where things are written.
        if (information.st_uid != ::geteuid() && information.st_uid != 0)
            return Target::failure(
                QStringLiteral("the link %1 belongs to another user").arg(QFile::decodeName(current)));
        const std::optional<QByteArray> text = layer.readlinkat(found.get(), "");
        if (!text)
            return Target::failure(failed("follow", current, errno).error);
        current = text->startsWith('/') ? *text : joined(folderOf(current), *text);
    }
    return Target::failure(failed("follow", path, ELOOP).error);
}

} // namespace

DurableFileWriter::DurableFileWriter(FileLayer *layer)
    : layer_(layer ? *layer : FileLayer::real())
{
}

Result<> DurableFileWriter::write(const QString &path, const QByteArray &bytes, const Options &options) const
{
    const Result<QByteArray> found = resolved(layer_, QFile::encodeName(path));
    if (!found)
        return Result<>::failure(found.error);
    const QByteArray &target = *found;

    struct stat old = {};
    const bool replaces = layer_.lstat(target, &old) == 0;
    if (!replaces && errno != ENOENT)
        return failed("examine", target, errno);
    if (replaces && !S_ISREG(old.st_mode))
        return Result<>::failure(QStringLiteral("%1 is no regular file").arg(QFile::decodeName(target)));
    if (replaces && layer_.access(target, W_OK) == -1)
        return failed("write", target, errno);

    TemporaryFile temporary(layer_, target);
    if (!temporary.exists())
        return failed("create", temporary.path(), errno);
    if (Result<> result = temporary.append(bytes.constData(), bytes.size()); !result)
        return result;
    if (replaces) {
        if (Result<> result = FileAttributes::keep(layer_, target, old, temporary.descriptor()); !result)
            return result;
    } else if (layer_.fchmod(temporary.descriptor(), static_cast<mode_t>(options.newFileMode)) == -1) {
        return failed("set the mode of", temporary.path(), errno);
    }
    if (options.modified.isValid())
        temporary.setModified(options.modified);
    if (Result<> result = temporary.finish(); !result)
        return result;

    if (replaces && !options.backupPath.isEmpty()) {
        if (Result<> result = keepBackup(layer_, target, QFile::encodeName(options.backupPath)); !result)
            return result;
    }
    if (Result<> result = temporary.moveTo(target); !result)
        return result;
    return synchroniseFolder(layer_, folderOf(target));
}

Result<> DurableFileWriter::give(const QString &path, const QByteArray &bytes) const
{
    const QByteArray target = QFile::encodeName(path);
    struct stat old = {};
    const bool isThere = layer_.lstat(target, &old) == 0;
    if (!isThere && errno != ENOENT)
        return failed("examine", target, errno);
    const bool isFile = isThere && S_ISREG(old.st_mode);
    if (isThere && !isFile && !S_ISLNK(old.st_mode))
        return Result<>::failure(QStringLiteral("%1 is no regular file").arg(path));
    if (isFile && layer_.access(target, W_OK) == -1)
        return failed("write", target, errno);

    const bool isOwn = isFile && old.st_uid == ::geteuid();
    TemporaryFile temporary(layer_, target, isOwn ? ownerOnly : asUsual);
    if (!temporary.exists())
        return failed("create", temporary.path(), errno);
    if (Result<> result = temporary.append(bytes.constData(), bytes.size()); !result)
        return result;
    if (isOwn) {
        if (Result<> result = FileAttributes::keepRights(layer_, target, old, temporary.descriptor());
            !result)
            return result;
    }
    if (Result<> result = temporary.finish(); !result)
        return result;
    if (Result<> result = temporary.moveTo(target); !result)
        return result;
    return synchroniseFolder(layer_, folderOf(target));
}

Result<bool> DurableFileWriter::writeIfFree(const QString &path, const QByteArray &bytes, int mode) const
{
    using Written = Result<bool>;
    const QByteArray target = QFile::encodeName(path);
    TemporaryFile temporary(layer_, target);
    if (!temporary.exists())
        return Written::failure(failed("create", temporary.path(), errno).error);
    Result<> done = temporary.append(bytes.constData(), bytes.size());
    if (done && layer_.fchmod(temporary.descriptor(), static_cast<mode_t>(mode)) == -1)
        done = failed("set the mode of", temporary.path(), errno);
    if (done)
        done = temporary.finish();
    const bool isFree = done && temporary.moveToFree(target);
    if (done && !isFree && errno != EEXIST)
        done = failed("rename the new file to", target, errno);
    if (isFree)
        done = synchroniseFolder(layer_, folderOf(target));
    return done ? Written(isFree) : Written::failure(done.error);
}

Result<> DurableFileWriter::copy(const QString &from, const QString &to) const
{
    const QByteArray target = QFile::encodeName(to);
    TemporaryFile temporary(layer_, target);
    if (!temporary.exists())
        return failed("create", temporary.path(), errno);
    if (Result<> result = fillCopy(layer_, QFile::encodeName(from), temporary); !result)
        return result;
    if (!temporary.moveToFree(target))
        return failed("create", target, errno);
    return synchroniseFolder(layer_, folderOf(target));
}

Result<> DurableFileWriter::makeSymbolicLink(const QString &path, const QByteArray &text) const
{
    const QByteArray link = QFile::encodeName(path);
    if (layer_.readlinkat(AT_FDCWD, link.constData()) == text)
        return {};
    const QByteArray temporary = randomTemporaryName(link);
    if (layer_.symlink(text, temporary) == -1)
        return failed("create", temporary, errno);
    if (layer_.rename(temporary, link) == -1) {
        const int errorNumber = errno;
        layer_.unlink(temporary);
        return failed("rename the new link to", link, errorNumber);
    }
    return synchroniseFolder(layer_, folderOf(link));
}

Result<> DurableFileWriter::rename(const QString &from, const QString &to) const
{
    const QByteArray target = QFile::encodeName(to);
    if (layer_.rename(QFile::encodeName(from), target) == -1)
        return failed("rename to", target, errno);
    return synchroniseFolder(layer_, folderOf(target));
}

Result<> DurableFileWriter::remove(const QString &path) const
{
    const QByteArray file = QFile::encodeName(path);
    if (layer_.unlink(file) == -1)
        return errno == ENOENT ? Result<>() : failed("remove", file, errno);
    return synchroniseFolder(layer_, folderOf(file));
}

Result<> DurableFileWriter::makeFolder(const QString &path) const
{
    return ::makeFolder(layer_, QFile::encodeName(QDir::cleanPath(path)));
}

Result<QString> DurableFileWriter::resolve(const QString &path) const
{
    const Result<QByteArray> target = resolved(layer_, QFile::encodeName(path));
    return target ? Result<QString>(QFile::decodeName(*target)) : Result<QString>::failure(target.error);
}

void DurableFileWriter::removeStrayTemporaries(const QString &path) const
{
    const Result<QByteArray> target = resolved(layer_, QFile::encodeName(path));
    if (!target)
        return;
    const QByteArray folder = folderOf(*target);
    const QByteArray prefix = temporaryPrefix(*target);
    for (const QByteArray &name : layer_.entries(folder).value_or(QList<QByteArray>())) {
        if (name.startsWith(prefix))
            layer_.unlink(joined(folder, name));
    }
}
