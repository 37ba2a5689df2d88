// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Journals.h"

#include "Helper/Creation/FileSystemTime.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcJournals, "quenby.helper.journals")

const QString nameTemplate = QStringLiteral("Creation-%1.journal");
const QString lockName = QStringLiteral("Creation.lock");
const QString noFolder = QStringLiteral("there is no folder for the program's state");

/// In milliseconds; it is held while one journal is written, or all are listed.
constexpr int lockTimeout = 10'000;
/// Of a creation of ten million items.
constexpr qint64 largestJournal = qint64(1) << 31;

} // namespace

Journals::Journals()
    : Journals(DesktopFolders::stateFolder())
{
}

Journals::Journals(QString folder)
    : folder_(std::move(folder))
{
}

Result<FileLock> Journals::lock(int timeout) const
{
    const Result<> made =
        folder_.isEmpty() ? Result<>::failure(noFolder) : DurableFileWriter().makeFolder(folder_);
    return made ? FileLock::acquire(FileLayer::real(), folder_ + u'/' + lockName, timeout)
                : Result<FileLock>::failure(made.error);
}

Result<std::shared_ptr<Creation::Journal>> Journals::begin(const Creation::JournalContent &content,
                                                           FolderLayer &layer) const
{
    using Begun = Result<std::shared_ptr<Creation::Journal>>;
    const Result<FileLock> locked = lock(lockTimeout);
    if (!locked)
        return Begun::failure(locked.error);
    const DurableFileWriter writer;
    QString path;
    for (int number = 1; path.isEmpty() || QFile::exists(path); ++number)
        path = folder_ + u'/' + nameTemplate.arg(number);
    // A writer that was killed found the same name.
    writer.removeStrayTemporaries(path);
    if (const Result<> written = writer.write(path, Creation::JournalFormat::write(content)); !written)
        return Begun::failure(written.error);
    Begun journal = Creation::Journal::open(path, layer);
    if (!journal)
        static_cast<void>(writer.remove(path));
    return journal;
}

Result<> Journals::remove(const QString &path) const
{
    return DurableFileWriter().remove(path);
}

/// The paths of those that nobody has open. A new one is open before anybody else can have the lock.
QStringList Journals::abandoned(int timeout) const
{
    QStringList paths;
    const QDir folder(folder_);
    const QStringList names =
        folder.entryList({nameTemplate.arg(QLatin1String("*"))}, QDir::Files | QDir::NoSymLinks);
    if (names.isEmpty())
        return paths;
    const Result<FileLock> locked = lock(timeout);
    if (!locked) {
        qCWarning(lcJournals) << "interrupted creations cannot be looked for:" << locked.error;
        return paths;
    }
    FileLayer &layer = FileLayer::real();
    for (const QString &name : names) {
        const QString path = folder.filePath(name);
        const FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_RDONLY | O_NOFOLLOW, 0));
        struct stat information = {};
        if (!file.isOpen() || layer.flock(file.get(), LOCK_EX | LOCK_NB) == -1)
            continue;
        if (layer.fstat(file.get(), &information) == 0 && information.st_nlink > 0)
            paths.append(path);
        layer.flock(file.get(), LOCK_UN);
    }
    return paths;
}

std::vector<Journals::Interrupted> Journals::interrupted(std::vector<Unreadable> &unreadable) const
{
    std::vector<Interrupted> journals;
    for (const QString &path : abandoned(lockTimeout)) {
        const Result<QByteArray> bytes = BoundedFile::read(path, largestJournal);
        const auto content = bytes ? Creation::JournalFormat::read(*bytes) : std::nullopt;
        if (content) {
            journals.push_back({path, *content});
            continue;
        }
        qCWarning(lcJournals) << "not the journal of a creation:" << path << bytes.error;
        // One that is gone by now stood for nothing.
        struct stat information = {};
        if (FileLayer::real().lstat(QFile::encodeName(path), &information) == 0)
            unreadable.push_back({path, FileSystemTime::of(information.st_mtim)});
    }
    std::sort(journals.begin(), journals.end(), [](const Interrupted &one, const Interrupted &other) {
        return one.content.begun > other.content.begun;
    });
    return journals;
}

bool Journals::hasInterrupted() const
{
    return !abandoned(0).isEmpty();
}

void Journals::setTold(const QString &path) const
{
    FileLayer &layer = FileLayer::real();
    const FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_WRONLY | O_NOFOLLOW, 0));
    const char told = 1;
    // At worst the user is told again.
    if (!file.isOpen() ||
        ::pwrite(file.get(), &told, sizeof told, Creation::JournalFormat::toldOffset()) == -1)
        qCWarning(lcJournals) << "cannot be marked as told:" << path;
}
