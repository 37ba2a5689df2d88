// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/PreferencesFile.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>

namespace {

constexpr QLatin1StringView lockKind("preferences");
const QString backupSuffix = QStringLiteral(".backup");
const QString damagedInfix = QStringLiteral(".damaged-");
const QString beforeInfix = QStringLiteral(".before-");
const QString utcStamp = QStringLiteral("yyyyMMdd'T'HHmmss'Z'");
/// More than one process could use up within the second that a time stamp lasts.
constexpr int maximumAsideNames = 1000;
constexpr qint64 readChunk = qint64(4) * 1024 * 1024;
/// Stays in the processor's cache.
constexpr qsizetype comparedChunk = qsizetype(128) * 1024;

/// At most \a limit bytes and one more; none with errno on failure.
std::optional<QByteArray> readUpTo(FileLayer &layer, int descriptor, qint64 expected, qint64 limit)
{
    QByteArray bytes;
    bytes.reserve(expected + 1);
    while (bytes.size() <= limit) {
        const qsizetype before = bytes.size();
        const qint64 wanted = std::max<qint64>(
            1, std::min({readChunk, limit + 1 - before, std::max<qint64>(expected + 1 - before, 1)}));
        bytes.resize(before + wanted);
        const ssize_t size = layer.read(descriptor, bytes.data() + before, static_cast<size_t>(wanted));
        bytes.resize(before + std::max<ssize_t>(size, 0));
        if (size == -1)
            return std::nullopt;
        if (size == 0)
            break;
        expected = std::max<qint64>(expected, bytes.size() + (bytes.size() > expected ? readChunk : 0));
    }
    return bytes;
}

/// Whether the file holds these bytes and no others, without a copy of them. An error says no: reading tells.
bool holds(FileLayer &layer, int descriptor, const QByteArray &bytes)
{
    QByteArray chunk(comparedChunk, Qt::Uninitialized);
    qsizetype same = 0;
    for (;;) {
        const ssize_t size = layer.read(descriptor, chunk.data(), static_cast<size_t>(chunk.size()));
        if (size <= 0)
            return size == 0 && same == bytes.size();
        if (size > bytes.size() - same ||
            std::memcmp(chunk.constData(), bytes.constData() + same, static_cast<size_t>(size)) != 0)
            return false;
        same += size;
    }
}

} // namespace

PreferencesFile::PreferencesFile(FileLayer &layer, const QString &path)
    : layer_(layer)
    , writer_(&layer)
    , path_(path)
{
}

Result<> PreferencesFile::locate(bool create)
{
    if (create) {
        if (Result<> result = writer_.makeFolder(QFileInfo(path_).path()); !result)
            return result;
    }
    const Result<QString> target = writer_.resolve(path_);
    if (!target)
        return Result<>::failure(target.error);
    target_ = *target;
    backup_ = target_ + backupSuffix;
    return {};
}

bool PreferencesFile::isMissing() const
{
    struct stat information = {};
    for (QString path = path_;; path = QFileInfo(path).path()) {
        if (layer_.lstat(QFile::encodeName(path), &information) == 0)
            return S_ISDIR(information.st_mode) && path != path_;
        if (errno != ENOENT || path == QFileInfo(path).path())
            return false;
    }
}

bool PreferencesFile::isLink() const
{
    struct stat information = {};
    return layer_.lstat(QFile::encodeName(path_), &information) == 0 && S_ISLNK(information.st_mode);
}

QStringList PreferencesFile::goodStates() const
{
    const QFileInfo backup(backup_);
    const QString begin = QFileInfo(target_).fileName() + beforeInfix;
    QStringList states;
    for (const QFileInfo &entry :
         QDir(backup.path()).entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks)) {
        if (entry.fileName() == backup.fileName() || entry.fileName().startsWith(begin))
            states << entry.filePath();
    }
    return states;
}

Result<FileLock> PreferencesFile::lock(const QString &folder, int timeout) const
{
    const QString place = folder.isEmpty() ? DesktopFolders::runtimeDirectory() : folder;
    if (place.isEmpty())
        return Result<FileLock>::failure(
            QStringLiteral("there is no safe folder for the lock of %1").arg(target_));
    // One lock for each file, so that the same domain of two homes has two, and two names of a file have one.
    const QString name = FileLock::fileNameFor(lockKind, target_);
    return FileLock::acquire(layer_, QDir(place).filePath(name), timeout);
}

PreferencesFile::Content PreferencesFile::read(const QByteArray &known) const
{
    Content content = readFile(target_, known);
    if (content.state == Content::Missing && isLink()) {
        content.state = Content::Unreadable;
        content.error =
            QStringLiteral("cannot read %1: the link leads to %2, which is not there").arg(path_, target_);
    }
    return content;
}

PreferencesFile::Content PreferencesFile::readBackup() const
{
    return readFile(backup_, {});
}

PreferencesFile::Content PreferencesFile::readFile(const QString &path, const QByteArray &known) const
{
    Content content;
    // Not to wait for the other end of what may be a pipe.
    FileDescriptor file(layer_, layer_.open(QFile::encodeName(path), O_RDONLY | O_NONBLOCK));
    struct stat information = {};
    if (!file.isOpen() || layer_.fstat(file.get(), &information) == -1) {
        content.state = !file.isOpen() && errno == ENOENT ? Content::Missing : Content::Unreadable;
        content.error = systemError(QStringLiteral("cannot open %1").arg(path), errno);
        return content;
    }
    content.modified = QDateTime::fromMSecsSinceEpoch(
        qint64(information.st_mtim.tv_sec) * 1000 + information.st_mtim.tv_nsec / 1'000'000, Qt::UTC);
    if (!S_ISREG(information.st_mode)) {
        content.state = Content::Unreadable;
        content.error = QStringLiteral("%1 is no regular file").arg(path);
        return content;
    }
    if (!known.isEmpty() && information.st_size == known.size()) {
        if (!holds(layer_, file.get(), known))
            return readFile(path, {});
        content.state = Content::Good;
        content.bytes = known;
        return content;
    }
    constexpr qint64 limit = PropertyList::Limits::inputSize;
    std::optional<QByteArray> bytes;
    if (information.st_size <= limit) {
        bytes = readUpTo(layer_, file.get(), information.st_size, limit);
        if (!bytes) {
            content.state = Content::Unreadable;
            content.error = systemError(QStringLiteral("cannot read %1").arg(path), errno);
            return content;
        }
    }
    if (!bytes || bytes->size() > limit) {
        content.state = Content::TooLarge;
        content.error =
            QStringLiteral("%1 has more than %2").arg(path, QLocale::c().formattedDataSize(limit, 0));
        return content;
    }

    content.bytes = *bytes;
    QString error;
    content.document = PropertyListDocument::parse(content.bytes, &error);
    if (content.document && !content.document->root().isDictionary()) {
        content.document.reset();
        error = QStringLiteral("the top object is no dictionary");
    }
    content.state = content.document ? Content::Good : Content::Damaged;
    if (!content.document)
        content.error = QStringLiteral("%1 is damaged: %2").arg(path, error);
    return content;
}

Result<QString> PreferencesFile::keepDamagedAside() const
{
    return keepAside(target_, damagedInfix, Aside::Link);
}

Result<QString> PreferencesFile::keepBackupAside() const
{
    return keepAside(backup_, damagedInfix, Aside::Link);
}

Result<> PreferencesFile::keepCopyAside() const
{
    struct stat information = {};
    if (layer_.lstat(QFile::encodeName(target_), &information) == -1 && errno == ENOENT)
        return {};
    const Result<QString> kept = keepAside(target_, beforeInfix, Aside::Copy);
    return kept ? Result<>() : Result<>::failure(kept.error);
}

Result<QString> PreferencesFile::keepAside(const QString &path, const QString &infix, Aside how) const
{
    const QString begin = path + infix;
    const QFileInfo beginning(begin);
    for (const QByteArray &entry :
         layer_.entries(QFile::encodeName(beginning.path())).value_or(QList<QByteArray>())) {
        const QString name = QFile::decodeName(entry);
        const QString present = QDir(beginning.path()).filePath(name);
        if (name.startsWith(beginning.fileName()) && holdsTheSame(path, present))
            return present;
    }

    const QString first = begin + QDateTime::currentDateTimeUtc().toString(utcStamp);
    QString aside = first;
    for (int number = 2; number < maximumAsideNames; ++number) {
        // Neither call replaces a file that is there.
        struct stat present = {};
        if (layer_.lstat(QFile::encodeName(aside), &present) == -1) {
            if (errno != ENOENT)
                return Result<QString>::failure(
                    systemError(QStringLiteral("cannot examine %1").arg(aside), errno));
            if (how == Aside::Link && layer_.link(QFile::encodeName(path), QFile::encodeName(aside)) == 0)
                return aside;
            if (how == Aside::Copy || errno != EEXIST) {
                const Result<> copied = writer_.copy(path, aside);
                return copied ? Result<QString>(aside) : Result<QString>::failure(copied.error);
            }
        }
        aside = QStringLiteral("%1-%2").arg(first, QString::number(number));
    }
    return Result<QString>::failure(QStringLiteral("there is no free name to keep %1 aside").arg(path));
}

bool PreferencesFile::holdsTheSame(const QString &path, const QString &other) const
{
    FileDescriptor one(layer_, layer_.open(QFile::encodeName(path), O_RDONLY | O_NONBLOCK));
    FileDescriptor two(layer_, layer_.open(QFile::encodeName(other), O_RDONLY | O_NONBLOCK | O_NOFOLLOW));
    struct stat first = {};
    struct stat second = {};
    if (!one.isOpen() || !two.isOpen() || layer_.fstat(one.get(), &first) == -1 ||
        layer_.fstat(two.get(), &second) == -1 || !S_ISREG(second.st_mode) || first.st_size != second.st_size)
        return false;
    if (first.st_dev == second.st_dev && first.st_ino == second.st_ino)
        return true;
    if (first.st_size > PropertyList::Limits::inputSize)
        return false;
    const auto these = readUpTo(layer_, one.get(), first.st_size, PropertyList::Limits::inputSize);
    const auto those = readUpTo(layer_, two.get(), second.st_size, PropertyList::Limits::inputSize);
    return these && those && *these == *those;
}

Result<> PreferencesFile::write(const QByteArray &bytes, bool backUp) const
{
    DurableFileWriter::Options options;
    if (backUp)
        options.backupPath = backup_;
    return writer_.write(target_, bytes, options);
}

Result<> PreferencesFile::restore(const Content &backup) const
{
    DurableFileWriter::Options options;
    options.modified = backup.modified;
    return writer_.write(target_, backup.bytes, options);
}
