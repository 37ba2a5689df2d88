// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What the entries look like was settled with the programs that start them. Rules for quoting there are, but
// few follow them: with a percent sign in the path of the program two of three starters find no program, a
// backslash makes one of them look for another, quotes, dollars and line ends are lost on a third, and what
// is no UTF-8 makes the whole file unreadable to all. A program whose path holds any of that is therefore
// started through a symbolic link with a plain name beside the entry: `.Name-<hash>/<executable>`, in a
// folder of its own so that the process has the executable's name. Starters read files named `*.desktop`
// only.

#include "Platform/Desktop/SharedFileList.h"

#include "Platform/Desktop/DesktopEntry.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Desktop/StartedProgram.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/FileURL.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <limits>
#include <sys/stat.h>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcSharedFileList, "quenby.platform.sharedfilelist")

const QString sessionFolder = QStringLiteral("autostart");
const QString entrySuffix = QStringLiteral(".desktop");

constexpr char applicationType[] = "Application";
/// The newest that the validator of Debian 12 knows.
constexpr char entryVersion[] = "1.0";
constexpr char urlKey[] = "X-Quenby-URL";
constexpr char placeKey[] = "X-Quenby-Place";

/// The entries of large programs, with their names in every language, have a tenth of that.
constexpr qint64 maximumEntrySize = 1 << 20;
/// Files of one name and hash that are not ours are there on purpose; some day we give up.
constexpr int maximumFileNames = 100;
constexpr int entryMode = 0644;
constexpr QLatin1StringView lockKind("autostart");
/// In milliseconds; whoever holds the lock writes a file or two.
constexpr int lockTimeout = 2000;

bool exists(const QByteArray &path)
{
    struct stat information = {};
    return ::stat(path.constData(), &information) == 0;
}

/// The absolute path of what the session would start under \a name.
std::optional<QByteArray> programPath(const QByteArray &name)
{
    if (name.isEmpty() || name.contains('\0'))
        return std::nullopt;
    if (name.startsWith('/'))
        return exists(name) ? std::optional(name) : std::nullopt;
    if (name.contains('/'))
        return std::nullopt;
    const QList<QByteArray> folders = qgetenv("PATH").split(':');
    for (const QByteArray &folder : folders) {
        const QByteArray path = folder + '/' + name;
        if (folder.startsWith('/') && StartedProgram::isProgram(path))
            return path;
    }
    return std::nullopt;
}

/// Whether every starter reads this path as it is.
bool isPlain(const QByteArray &path)
{
    if (QString::fromUtf8(path).toUtf8() != path)
        return false;
    const auto isMisread = [](char character) {
        return static_cast<unsigned char>(character) < ' ' ||
               QByteArrayView("\"\\$`%\x7f").contains(character);
    };
    return !path.endsWith(' ') && std::none_of(path.begin(), path.end(), isMisread);
}

/// Has \a program, quoted, stand in \a line wherever \a path is an argument of its own without quotes;
/// whether it does anywhere.
bool replaceBare(QByteArray &line, const QByteArray &path, const QByteArray &program)
{
    const auto isEdge = [&line](qsizetype index) {
        return index < 0 || index == line.size() || line[index] == ' ' || line[index] == '\t';
    };
    bool isFound = false;
    for (qsizetype at = line.indexOf(path); at != -1; at = line.indexOf(path, at + 1)) {
        const bool isQuoted = QByteArrayView(line).first(at).count('"') % 2 == 1;
        if (isQuoted || !isEdge(at - 1) || !isEdge(at + path.size()))
            continue;
        line.replace(at, path.size(), program);
        at += program.size() - 1;
        isFound = true;
    }
    return isFound;
}

/// The command line of the entry \a bytes with \a program, quoted, in the place of the one that the entry was
/// written for; \a program alone if it does not hold that.
QByteArray commandLine(const QByteArray &bytes, const QByteArray &program)
{
    QString error;
    const std::optional<DesktopEntry> entry = DesktopEntry::parse(bytes, &error);
    const QByteArray before = entry ? entry->string(DesktopEntryKeys::tryExec) : QByteArray();
    if (before.isEmpty())
        return program;
    QByteArray line = entry->string(DesktopEntryKeys::exec);
    const QByteArray part = DesktopEntry::quoted(before);
    if (line.contains(part))
        return line.replace(part, program);
    return replaceBare(line, before, program) ? line : program;
}

} // namespace

std::optional<SharedFileList> SharedFileList::create()
{
    const QString configuration = DesktopFolders::configHome();
    if (configuration.isEmpty()) {
        qCWarning(lcSharedFileList) << "no list of login items without a home";
        return std::nullopt;
    }
    return create(configuration + u'/' + sessionFolder);
}

std::optional<SharedFileList> SharedFileList::create(const QString &folder)
{
    const QFileInfo information(folder);
    if (!information.isDir() && (information.exists() || information.isSymLink())) {
        qCWarning(lcSharedFileList) << "no list of login items, it is no folder:" << folder;
        return std::nullopt;
    }
    return SharedFileList(folder);
}

Result<> SharedFileList::insertItemURL(const QUrl &url) const
{
    const std::optional<QByteArray> path = pathOfFileURL(url.adjusted(QUrl::StripTrailingSlash));
    if (!path)
        return Result<>::failure(QStringLiteral("no address of a file"));
    const Result<StartedProgram> started = StartedProgram::ofFile(*path);
    if (!started)
        return Result<>::failure(started.error);

    if (Result<> result = DurableFileWriter().makeFolder(folder_); !result)
        return result;
    const Result<FileLock> lock = acquireLock();
    if (!lock)
        return Result<>::failure(lock.error);

    const QUrl address = fileURLOfPath(*path);
    QList<Item> replaced;
    qlonglong lastPlace = 0;
    const QList<Item> present = entries();
    for (const Item &item : present) {
        if (item.url_ == address || isMovedTo(item, address))
            replaced.append(item);
        else
            lastPlace = std::max(lastPlace, item.place_);
    }
    const qlonglong place = lastPlace == std::numeric_limits<qlonglong>::max() ? lastPlace : lastPlace + 1;
    const Result<QList<DesktopEntry::Change>> starting = startingWith(*started, address);
    if (!starting)
        return Result<>::failure(starting.error);
    QList<DesktopEntry::Change> changes = {{DesktopEntryKeys::type, applicationType},
                                           {DesktopEntryKeys::version, entryVersion},
                                           {DesktopEntryKeys::name, started->name()}};
    if (!started->comment().isEmpty())
        changes.append({DesktopEntryKeys::comment, started->comment()});
    if (!started->icon().isEmpty())
        changes.append({DesktopEntryKeys::icon, started->icon()});
    changes += *starting;
    changes.append({placeKey, QByteArray::number(place)});
    changes.append({DesktopEntryKeys::hidden, std::nullopt});
    changes.append({DesktopEntryKeys::autostartEnabled, std::nullopt});
    return write(*started, address, replaced, changes);
}

Result<> SharedFileList::replaceOutdated(const QUrl &url) const
{
    const QUrl address = url.adjusted(QUrl::StripTrailingSlash);
    const Result<StartedProgram> started =
        StartedProgram::ofFile(pathOfFileURL(address).value_or(QByteArray()));
    const auto isEarlier = [&](const Item &item) {
        return item.url_ == address && started && started->isEarlierName(item.fileName_);
    };
    const auto isOutdated = [&](const Item &item) { return isEarlier(item) || isMovedTo(item, address); };
    const QList<Item> seen = entries();
    if (std::none_of(seen.cbegin(), seen.cend(), isOutdated))
        return {};
    if (!started)
        return Result<>::failure(started.error);
    const Result<FileLock> lock = acquireLock();
    if (!lock)
        return Result<>::failure(lock.error);

    // Until then somebody else may have changed them.
    QList<Item> moved;
    QList<Item> own;
    const QList<Item> present = entries();
    for (const Item &item : present) {
        if (item.url_ == address)
            own.append(item);
        else if (isMovedTo(item, address))
            moved.append(item);
    }
    // Of those that it has under both names an active one is left, if there is one.
    std::stable_sort(own.begin(), own.end(), [&](const Item &one, const Item &other) {
        return std::pair(one.isHidden_, isEarlier(one)) < std::pair(other.isHidden_, isEarlier(other));
    });
    const DurableFileWriter writer;
    if (!own.isEmpty() && isEarlier(own.constFirst())) {
        const auto wellNamed = std::find_if_not(own.cbegin(), own.cend(), isEarlier);
        const std::optional<QString> name = wellNamed == own.cend() ? unusedFileName(started->entryName())
                                                                    : std::optional(wellNamed->fileName_);
        if (!name)
            return Result<>::failure(noNameIsLeft());
        if (Result<> result = writer.rename(in(own.constFirst().fileName_), in(*name)); !result)
            return result;
    }
    const QList<Item> others = own.mid(1);
    for (const Item &item : others) {
        if (!isEarlier(item))
            continue;
        if (Result<> result = writer.remove(in(item.fileName_)); !result)
            return result;
    }
    if (moved.isEmpty())
        return {};
    if (own.isEmpty()) {
        const Result<QList<DesktopEntry::Change>> starting = startingWith(*started, address);
        return starting ? write(*started, address, moved, *starting) : Result<>::failure(starting.error);
    }
    // Who switched it off would not have it started in the place of the other.
    return own.constFirst().isHidden_ ? Result<>() : discard(moved, address);
}

bool SharedFileList::isMovedTo(const Item &item, const QUrl &address) const
{
    return !item.isHidden_ && item.url_.isValid() && item.url_ != address &&
           item.url_.fileName() == address.fileName() && !resolve(item);
}

Result<QList<DesktopEntry::Change>> SharedFileList::startingWith(const StartedProgram &started,
                                                                 const QUrl &address) const
{
    const QString linkName = StartedProgram::nameOfPath(pathOfFileURL(address).value_or(QByteArray()));
    QByteArray reachable;
    if (const Result<> result = makeReachable(started.program(), linkName, &reachable); !result)
        return Result<QList<DesktopEntry::Change>>::failure(result.error);
    return QList<DesktopEntry::Change>{{DesktopEntryKeys::exec, DesktopEntry::quoted(reachable)},
                                       {DesktopEntryKeys::tryExec, reachable},
                                       {urlKey, address.toEncoded()}};
}

Result<> SharedFileList::write(const StartedProgram &started, const QUrl &address,
                               const QList<Item> &replaced, QList<DesktopEntry::Change> changes) const
{
    constexpr int namedAfterPath = 3;
    const auto rank = [&](const Item &item) {
        const bool isOwn = item.url_ == address;
        if (isOwn && !started.isEarlierName(item.fileName_))
            return 0;
        if (item.fileName_ == started.entryName() + entrySuffix)
            return 1;
        const QByteArray path = pathOfFileURL(item.url_).value_or(QByteArray());
        const bool isNamedAfterPath = item.fileName_.startsWith(StartedProgram::nameOfPath(path));
        return isOwn || isNamedAfterPath ? namedAfterPath : 2;
    };
    const auto kept =
        std::min_element(replaced.cbegin(), replaced.cend(),
                         [&](const Item &one, const Item &other) { return rank(one) < rank(other); });
    const bool hasName = kept != replaced.cend() && rank(*kept) < namedAfterPath;
    const std::optional<QString> fileName =
        hasName ? std::optional(kept->fileName_) : unusedFileName(started.entryName());
    if (!fileName)
        return Result<>::failure(noNameIsLeft());
    const QByteArray entry = kept == replaced.cend() ? QByteArray() : kept->bytes_;
    for (DesktopEntry::Change &change : changes) {
        if (change.key == DesktopEntryKeys::exec)
            change.value = commandLine(entry, *change.value);
    }

    const DurableFileWriter writer;
    writer.removeStrayTemporaries(in(*fileName));
    if (Result<> result =
            writer.write(in(*fileName), DesktopEntry::changed(entry, changes), {.newFileMode = entryMode});
        !result)
        return result;
    return discard(replaced, address, *fileName);
}

Result<> SharedFileList::discard(const QList<Item> &items, const QUrl &address, const QString &kept) const
{
    for (const Item &item : items) {
        if (item.fileName_ == kept)
            continue;
        if (Result<> result = DurableFileWriter().remove(in(item.fileName_)); !result)
            return result;
    }
    for (const Item &item : items) {
        if (item.url_ != address)
            removeLinks(item);
    }
    return {};
}

QList<SharedFileList::Item> SharedFileList::copySnapshot() const
{
    QList<Item> items = entries();
    items.removeIf([](const Item &item) { return item.isHidden_; });
    std::sort(items.begin(), items.end(), [](const Item &one, const Item &other) {
        return one.place_ == other.place_ ? one.fileName_ < other.fileName_ : one.place_ < other.place_;
    });
    return items;
}

std::optional<QUrl> SharedFileList::resolve(const Item &item) const
{
    if (item.url_.isValid()) {
        const std::optional<QByteArray> path = pathOfFileURL(item.url_);
        return path && exists(*path) ? std::optional(item.url_) : std::nullopt;
    }
    const std::optional<QByteArray> path = programPath(item.program_);
    return path ? std::optional(fileURLOfPath(*path)) : std::nullopt;
}

Result<> SharedFileList::remove(const Item &item) const
{
    if (!QFileInfo::exists(folder_))
        return {};
    const Result<FileLock> lock = acquireLock();
    if (!lock)
        return Result<>::failure(lock.error);
    if (Result<> result = DurableFileWriter().remove(in(item.fileName_)); !result)
        return result;
    removeLinks(item);
    return {};
}

Result<FileLock> SharedFileList::acquireLock() const
{
    const QString place = DesktopFolders::runtimeDirectory();
    if (place.isEmpty())
        return Result<FileLock>::failure(
            QStringLiteral("there is no safe folder for the lock of %1").arg(folder_));
    // However the folder is reached, its lock is one.
    const QString name = FileLock::fileNameFor(lockKind, QFileInfo(folder_).canonicalFilePath());
    return FileLock::acquire(FileLayer::real(), QDir(place).filePath(name), lockTimeout);
}

QList<SharedFileList::Item> SharedFileList::entries() const
{
    QList<Item> items;
    const QStringList names = QDir(folder_).entryList(
        {u'*' + entrySuffix}, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::CaseSensitive,
        QDir::Name);
    for (const QString &name : names) {
        if (std::optional<Item> item = read(name))
            items.append(*std::move(item));
    }
    return items;
}

std::optional<SharedFileList::Item> SharedFileList::read(const QString &fileName) const
{
    const Result<QByteArray> bytes = BoundedFile::read(in(fileName), maximumEntrySize);
    QString error = bytes.error;
    const std::optional<DesktopEntry> entry = bytes ? DesktopEntry::parse(*bytes, &error) : std::nullopt;
    if (!entry) {
        qCWarning(lcSharedFileList) << "no login item:" << fileName << error;
        return std::nullopt;
    }
    Item item;
    item.fileName_ = fileName;
    item.bytes_ = *bytes;
    item.isHidden_ =
        entry->boolean(DesktopEntryKeys::hidden) || (entry->contains(DesktopEntryKeys::autostartEnabled) &&
                                                     !entry->boolean(DesktopEntryKeys::autostartEnabled));
    // An entry that only switches off one of the system's need not say more.
    if (!item.isHidden_ && entry->string(DesktopEntryKeys::type) != applicationType) {
        qCWarning(lcSharedFileList) << "no login item:" << fileName << "of another type";
        return std::nullopt;
    }
    item.url_ = QUrl::fromEncoded(entry->string(urlKey), QUrl::StrictMode);
    item.program_ = entry->program();
    item.place_ = std::max(0LL, entry->string(placeKey).toLongLong());
    return item;
}

std::optional<QString> SharedFileList::unusedFileName(const QString &name) const
{
    for (int number = 1; number <= maximumFileNames; ++number) {
        const QString fileName = (number == 1 ? name : name + u'-' + QString::number(number)) + entrySuffix;
        const QFileInfo information(in(fileName));
        if (!information.exists() && !information.isSymLink())
            return fileName;
    }
    return std::nullopt;
}

Result<> SharedFileList::makeReachable(const QByteArray &program, const QString &name,
                                       QByteArray *reachable) const
{
    *reachable = program;
    if (isPlain(program))
        return {};
    const QByteArray executable = program.mid(program.lastIndexOf('/') + 1);
    const QString folder = in(u'.' + name);
    const QString link = folder + u'/' + (isPlain(executable) ? QFile::decodeName(executable) : name);
    *reachable = QFile::encodeName(link);
    if (!isPlain(*reachable))
        return Result<>::failure(QStringLiteral("%1 cannot be named in an entry").arg(link));
    if (QFileInfo(folder).isSymLink())
        return Result<>::failure(QStringLiteral("%1 is somebody else's").arg(folder));
    const DurableFileWriter writer;
    if (Result<> result = writer.makeFolder(folder); !result)
        return result;
    return writer.makeSymbolicLink(link, program);
}

void SharedFileList::removeLinks(const Item &item) const
{
    const std::optional<QByteArray> itsPath = pathOfFileURL(item.url_);
    if (!itsPath)
        return;
    const QString folder = in(u'.' + StartedProgram::nameOfPath(*itsPath));
    // Not through a link to a folder that is not ours.
    if (!QFileInfo(folder).isDir() || QFileInfo(folder).isSymLink())
        return;
    const QStringList links =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &link : links) {
        const QString path = folder + u'/' + link;
        if (!QFileInfo(path).isSymLink())
            continue;
        if (const Result<> result = DurableFileWriter().remove(path); !result)
            qCWarning(lcSharedFileList) << result.error;
    }
    if (!QDir().rmdir(folder))
        qCWarning(lcSharedFileList) << "not removed:" << folder;
}
