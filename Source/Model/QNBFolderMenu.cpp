// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBFolderMenu.h"

#include "Platform/Desktop/Bundle.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

Q_LOGGING_CATEGORY(lcFolderMenu, "quenby.model.foldermenu")

using QNBFolderMenu::Kind;
using QNBFolderMenu::Limits;

enum class Type { File, Folder, LinkedFolder, Other };

struct Entry
{
    QString name;
    Type type;
};

/// A folder that the walk is in.
struct Level
{
    /// Relative, with a slash at its end; empty for the walk's own.
    QString prefix;
    std::vector<Entry> entries;
    std::size_t next = 0;
};

struct FolderCloser
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

Type typeOfTarget(int folder, const char *name)
{
    struct stat information = {};
    // A link that leads nowhere may lead to a volume that is away.
    if (::fstatat(folder, name, &information, 0) != 0)
        return Type::File;
    if (S_ISDIR(information.st_mode))
        return Type::LinkedFolder;
    return S_ISREG(information.st_mode) ? Type::File : Type::Other;
}

Type typeOf(int folder, const dirent &entry)
{
    unsigned char type = entry.d_type;
    struct stat information = {};
    if (type == DT_UNKNOWN && ::fstatat(folder, entry.d_name, &information, AT_SYMLINK_NOFOLLOW) == 0)
        type = IFTODT(information.st_mode);
    switch (type) {
    case DT_REG:
        return Type::File;
    case DT_DIR:
        return Type::Folder;
    case DT_LNK:
        return typeOfTarget(folder, entry.d_name);
    default:
        return Type::Other;
    }
}

class Walk
{
public:
    Walk(const QString &folder, Kind kind, const Limits &limits)
        : root_(folder + u'/')
        , kind_(kind)
        , limits_(limits)
        , deadline_(limits.duration)
    {
    }

    QStringList run()
    {
        enter({});
        while (!levels_.empty() && !hasStopped_) {
            Level &level = levels_.back();
            if (level.next == level.entries.size()) {
                levels_.pop_back();
                continue;
            }
            const Entry &entry = level.entries[level.next++];
            visit(level.prefix + entry.name, entry);
        }
        return result_;
    }

private:
    void visit(const QString &path, const Entry &entry)
    {
        if (entry.type == Type::Other)
            return;
        if (entry.type == Type::File) {
            if (!entry.name.startsWith(u'.') && !entry.name.startsWith(u'_'))
                list(path);
            return;
        }
        if (kind_ == Kind::Scripts)
            list(path);
        const bool isClosed =
            entry.type == Type::LinkedFolder || (kind_ == Kind::Scripts && Bundle::isBundle(root_ + path));
        if (!isClosed && !hasStopped_)
            enter(path + u'/');
    }

    void list(const QString &path)
    {
        if (result_.size() == limits_.entries)
            stop("entries");
        else
            result_.append(path);
    }

    void enter(const QString &prefix)
    {
        const bool isRoot = prefix.isEmpty();
        const QString path = root_ + prefix;
        const int descriptor = ::open(QFile::encodeName(path).constData(),
                                      O_RDONLY | O_DIRECTORY | O_CLOEXEC | (isRoot ? 0 : O_NOFOLLOW));
        const OpenFolder folder(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
        if (!folder) {
            if (!isRoot || errno != ENOENT)
                qCWarning(lcFolderMenu) << "not listed:" << path << qt_error_string(errno);
            return;
        }
        Level level{prefix, {}};
        while (const dirent *found = hasStopped_ ? nullptr : ::readdir(folder.get())) {
            const QByteArray bytes = found->d_name;
            if (bytes == "." || bytes == "..")
                continue;
            countVisit();
            const QString name = QFile::decodeName(bytes);
            if (QFile::encodeName(name) == bytes)
                level.entries.push_back({name, typeOf(descriptor, *found)});
            else
                qCWarning(lcFolderMenu) << "not listed, the name is no text:" << path << bytes;
        }
        levels_.push_back(std::move(level));
    }

    void countVisit()
    {
        if (++visits_ > limits_.visits)
            stop("visits");
        else if (deadline_.hasExpired())
            stop("time");
    }

    void stop(const char *limit)
    {
        hasStopped_ = true;
        qCWarning(lcFolderMenu) << "not everything is listed of" << root_ << "for the limit of" << limit;
    }

    const QString root_;
    const Kind kind_;
    const Limits limits_;
    const QDeadlineTimer deadline_;
    std::vector<Level> levels_;
    QStringList result_;
    qsizetype visits_ = 0;
    bool hasStopped_ = false;
};

} // namespace

QStringList QNBFolderMenu::entries(const QString &folder, Kind kind, const Limits &limits)
{
    return Walk(folder, kind, limits).run();
}
