// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What the entries look like was settled with the programs that start them. Rules for quoting there are, but
// few follow them: with a percent sign in the path of the program two of three starters find no program, a
// backslash makes one of them look for another, quotes, dollars and line ends are lost on a third, and what
// is no UTF-8 makes the whole file unreadable to all. A program whose path holds any of that is therefore
// started through a symbolic link with a plain name beside the entry: `.Name-<hash>/<executable>`, in a
// folder of its own so that the process has the executable's name. Starters read files named `*.desktop`
// only.

#include "Platform/SharedFileList.h"

#include "Platform/BoundedFile.h"
#include "Platform/Bundle.h"
#include "Platform/DesktopEntry.h"
#include "Platform/DesktopFolders.h"
#include "Platform/FileDescriptor.h"
#include "Platform/FileURL.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

Q_LOGGING_CATEGORY(lcSharedFileList, "quenby.platform.sharedfilelist")

const QString sessionFolder = QStringLiteral("autostart");
const QString entrySuffix = QStringLiteral(".desktop");

constexpr char applicationType[] = "Application";
/// The newest that the validator of Debian 12 knows.
constexpr char entryVersion[] = "1.0";
constexpr char urlKey[] = "X-Quenby-URL";
constexpr char placeKey[] = "X-Quenby-Place";

/// What an application says of itself in its information: its name and what it does, for people, and the name
/// of its icon in the theme.
const QString nameKey = QStringLiteral("CFBundleDisplayName");
const QString commentKey = QStringLiteral("CFBundleGetInfoString");
const QString iconKey = QStringLiteral("CFBundleIconFile");
const QString identifierKey = QStringLiteral("CFBundleIdentifier");

/// The entries of large programs, with their names in every language, have a tenth of that.
constexpr qint64 maximumEntrySize = 1 << 20;
/// As much of a name as leaves room in a file name for a hash, a number and a suffix.
constexpr qsizetype maximumNameSize = 64;
constexpr qsizetype maximumIdSize = 200;
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

bool isProgram(const QByteArray &path)
{
    struct stat information = {};
    return ::stat(path.constData(), &information) == 0 && S_ISREG(information.st_mode) &&
           ::access(path.constData(), X_OK) == 0;
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
        if (folder.startsWith('/') && isProgram(path))
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

/// What the folder of links to the file at \a path is called, and its entry if it has no better name:
/// readable, and the file's own.
QString nameOfPath(const QByteArray &path)
{
    QString name = QFileInfo(QFile::decodeName(path)).completeBaseName().left(maximumNameSize);
    for (QChar &character : name) {
        const bool isReadable = (character >= u'a' && character <= u'z') ||
                                (character >= u'A' && character <= u'Z') ||
                                (character >= u'0' && character <= u'9') || character == u'_';
        if (!isReadable)
            character = u'-';
    }
    const QByteArray hash = QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex().left(16);
    return name + u'-' + QString::fromLatin1(hash);
}

/// \a text in one line, for an entry.
QByteArray oneLine(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = QChar::ReplacementCharacter;
    }
    return text.toUtf8();
}

/// What the user is told that the session starts, unless that says it itself.
QString displayName(const QString &path)
{
    const QFileInfo file(path);
    const QString name = file.completeBaseName();
    return name.trimmed().isEmpty() ? file.fileName() : name;
}

/// What an entry starts, and how it is presented where the user sees it.
struct Started
{
    QByteArray program;
    QVariantMap information = {};

    /// A text that the application says of itself; empty if it does not.
    QString text(const QString &key) const
    {
        const QVariant value = information.value(key);
        return value.typeId() == QMetaType::QString ? value.toString().trimmed() : QString();
    }
};

/// What is started for the file at \a path; none if that is nothing that can be started, with the reason in
/// \a error.
std::optional<Started> startedProgram(const QByteArray &path, QString *error)
{
    // A bundle is opened by a path that is text, whatever its own is.
    const FileDescriptor opened(FileLayer::real(), ::open(path.constData(), O_PATH | O_CLOEXEC));
    const QString openedPath = QStringLiteral("/proc/self/fd/%1").arg(opened.get());
    if (QFileInfo(openedPath).isDir() && Bundle::isNamedLikeAnApplication(QFile::decodeName(path))) {
        const std::optional<Bundle> bundle = Bundle::bundleWithPath(openedPath);
        const QString executable = bundle ? bundle->expectedExecutablePath() : QString();
        if (!executable.isEmpty())
            return Started{path + QFile::encodeName(executable.sliced(openedPath.size())),
                           bundle->infoDictionary()};
        *error = QStringLiteral("an application that names no executable");
        return std::nullopt;
    }
    if (isProgram(path))
        return Started{path};
    *error = QStringLiteral("neither an application nor a program");
    return std::nullopt;
}

/// Whether a desktop takes it for the identifier of an application.
bool isApplicationId(const QString &text)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("[A-Za-z_][A-Za-z0-9_]*(\\.[A-Za-z_][A-Za-z0-9_]*)+")));
    return text.size() <= maximumIdSize && form.match(text).hasMatch();
}

/// What the entry that starts \a started for the file at \a path is called, apart from its suffix. Desktops
/// take that for the identifier of what they have started, and some refuse programs without one.
QString entryName(const Started &started, const QByteArray &path)
{
    const QString identifier = started.text(identifierKey);
    return isApplicationId(identifier) ? identifier : nameOfPath(path);
}

/// Whether the entry in \a fileName was named by an earlier version, which knew no identifiers.
bool hasEarlierName(const QString &fileName, const Started &started, const QByteArray &path)
{
    const QString earlier = nameOfPath(path);
    return entryName(started, path) != earlier && fileName.startsWith(earlier);
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
    QString error;
    const std::optional<Started> started = startedProgram(*path, &error);
    if (!started)
        return Result<>::failure(error);

    const DurableFileWriter writer;
    if (Result<> result = writer.makeFolder(folder_); !result)
        return result;
    const Result<FileLock> lock = acquireLock();
    if (!lock)
        return Result<>::failure(lock.error);

    const QUrl address = fileURLOfPath(*path);
    // The first of those that keep their name is written anew, the others go.
    QStringList kept;
    QStringList obsolete;
    QStringList unusedLinks;
    qlonglong lastPlace = 0;
    const QList<Item> present = entries();
    for (const Item &item : present) {
        const bool isMoved = isMovedTo(item, address);
        if (item.url_ != address && !isMoved) {
            lastPlace = std::max(lastPlace, item.place_);
            continue;
        }
        const QByteArray itsPath = pathOfFileURL(item.url_).value_or(QByteArray());
        if (isMoved)
            unusedLinks.append(nameOfPath(itsPath));
        // Of those that were moved the one with the present name; what the user calls one that is there
        // stays.
        const bool isWellNamed = isMoved ? item.fileName_ == entryName(*started, *path) + entrySuffix
                                         : !hasEarlierName(item.fileName_, *started, itsPath);
        if (!isWellNamed)
            obsolete.append(item.fileName_);
        else if (isMoved)
            kept.append(item.fileName_);
        else
            kept.prepend(item.fileName_);
    }
    const std::optional<QString> fileName =
        kept.isEmpty() ? unusedFileName(entryName(*started, *path)) : std::optional(kept.takeFirst());
    if (!fileName)
        return Result<>::failure(noNameIsLeft());
    obsolete += kept;

    QByteArray reachable;
    if (Result<> result = makeReachable(started->program, nameOfPath(*path), &reachable); !result)
        return result;

    QByteArray entry = QByteArray("[") + DesktopEntryKeys::group + "]\n";
    DesktopEntry::appendString(entry, DesktopEntryKeys::type, applicationType);
    DesktopEntry::appendString(entry, DesktopEntryKeys::version, entryVersion);
    const QString ownName = started->text(nameKey);
    DesktopEntry::appendString(entry, DesktopEntryKeys::name,
                               oneLine(ownName.isEmpty() ? displayName(QFile::decodeName(*path)) : ownName));
    const auto appendText = [&](const char *key, const QString &text) {
        if (!text.isEmpty())
            DesktopEntry::appendString(entry, key, oneLine(text));
    };
    appendText(DesktopEntryKeys::comment, started->text(commentKey));
    appendText(DesktopEntryKeys::icon, started->text(iconKey));
    DesktopEntry::appendString(entry, DesktopEntryKeys::exec, DesktopEntry::quoted(reachable));
    DesktopEntry::appendString(entry, DesktopEntryKeys::tryExec, reachable);
    DesktopEntry::appendString(entry, urlKey, address.toEncoded());
    const qlonglong place = lastPlace == std::numeric_limits<qlonglong>::max() ? lastPlace : lastPlace + 1;
    DesktopEntry::appendString(entry, placeKey, QByteArray::number(place));
    writer.removeStrayTemporaries(in(*fileName));
    Result<> result = writer.write(in(*fileName), entry, {.newFileMode = entryMode});
    for (const QString &name : std::as_const(obsolete)) {
        if (result)
            result = writer.remove(in(name));
    }
    for (const QString &name : std::as_const(unusedLinks)) {
        if (result)
            removeLinks(name);
    }
    return result;
}

Result<> SharedFileList::replaceOutdated(const QUrl &url) const
{
    const QUrl address = url.adjusted(QUrl::StripTrailingSlash);
    const QByteArray path = pathOfFileURL(address).value_or(QByteArray());
    QString error;
    const std::optional<Started> started = startedProgram(path, &error);
    const auto isEarlier = [&](const Item &item) {
        return item.url_ == address && started && hasEarlierName(item.fileName_, *started, path);
    };
    const QList<Item> items = entries();
    if (std::any_of(items.cbegin(), items.cend(), isEarlier)) {
        const Result<FileLock> lock = acquireLock();
        if (!lock)
            return Result<>::failure(lock.error);
        const QList<Item> present = entries();
        bool hasPresentName = std::any_of(present.cbegin(), present.cend(), [&](const Item &item) {
            return item.url_ == address && !isEarlier(item);
        });
        const DurableFileWriter writer;
        for (const Item &item : present) {
            if (!isEarlier(item))
                continue;
            const auto name = hasPresentName ? std::nullopt : unusedFileName(entryName(*started, path));
            if (!hasPresentName && !name)
                return Result<>::failure(noNameIsLeft());
            const Result<> result =
                name ? writer.rename(in(item.fileName_), in(*name)) : writer.remove(in(item.fileName_));
            if (!result)
                return result;
            hasPresentName = true;
        }
    }
    const bool isMoved =
        std::any_of(items.cbegin(), items.cend(), [&](const Item &item) { return isMovedTo(item, address); });
    return isMoved ? insertItemURL(address) : Result<>();
}

bool SharedFileList::isMovedTo(const Item &item, const QUrl &address) const
{
    return !item.isHidden_ && item.url_.isValid() && item.url_ != address &&
           item.url_.fileName() == address.fileName() && !resolve(item);
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
    if (const std::optional<QByteArray> path = pathOfFileURL(item.url_))
        removeLinks(nameOfPath(*path));
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

void SharedFileList::removeLinks(const QString &name) const
{
    const QString folder = in(u'.' + name);
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
