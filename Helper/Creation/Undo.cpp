// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Record.h"
#include "Helper/Creation/Removal.h"
#include "Platform/FileDescriptor.h"
#include "Platform/LineText.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Creation {

namespace {

/// Finds out if everything is as the record says.
class Comparison
{
public:
    Comparison(FolderLayer &layer, const Record &record, EarlierUndo earlier)
        : layer_(layer)
        , record_(record)
        , earlier_(earlier)
        , made_(record.entries.size())
        , hasMade_(record.entries.size())
    {
        for (const Record::Entry &entry : record_.entries) {
            if (entry.folder == Record::inTarget) {
                targetHasMade_ = targetHasMade_ || entry.isMade();
                continue;
            }
            const auto folder = static_cast<std::size_t>(entry.folder);
            ++made_[folder];
            hasMade_[folder] = hasMade_[folder] || entry.isMade();
        }
    }

    /// What stands in the way; empty if nothing does.
    QString compare(RecordWalk &walk)
    {
        if (targetHasMade_ && layer_.faccessat(walk.enter(Record::inTarget), ".", W_OK | X_OK) == -1)
            return systemError(QStringLiteral("nothing can be removed from the folder"), errno);
        for (qsizetype i = 0; i < static_cast<qsizetype>(record_.entries.size()); ++i) {
            QString difference = compareEntry(walk, i);
            if (!difference.isEmpty())
                return QStringLiteral("“%1” %2").arg(record_.path(i), difference);
        }
        return {};
    }

private:
    QString compareEntry(RecordWalk &walk, qsizetype number)
    {
        const Record::Entry &entry = record_.entries[static_cast<std::size_t>(number)];
        const int folder = walk.enter(entry.folder);
        struct stat now = {};
        if (folder == -1 || layer_.fstatat(folder, entry.name.constData(), &now, AT_SYMLINK_NOFOLLOW) == -1)
            return errno == ENOENT ? QStringLiteral("is no longer there")
                                   : systemError(QStringLiteral("cannot be looked at"), errno);
        if (FileIdentity(now) != entry.identity || S_ISDIR(now.st_mode) != entry.isFolder())
            return QStringLiteral("was replaced");
        if (entry.isMade() && !isModeOf(entry, now.st_mode & ALLPERMS))
            return QStringLiteral("has other permissions");
        if (!entry.isFolder() && !(now.st_size == entry.size && now.st_mtim.tv_sec == entry.modified.tv_sec &&
                                   now.st_mtim.tv_nsec == entry.modified.tv_nsec))
            return QStringLiteral("was changed");
        return entry.isFolder() ? compareFolder(walk, number) : QString();
    }

    /// To remove what is in it an earlier undo may have unlocked a folder.
    bool isModeOf(const Record::Entry &entry, mode_t mode) const
    {
        return mode == entry.mode || (earlier_ == EarlierUndo::Unfinished && entry.isFolder() &&
                                      mode == RecordWalk::unlocked(entry.mode));
    }

    QString compareFolder(RecordWalk &walk, qsizetype number)
    {
        const auto place = static_cast<std::size_t>(number);
        const int folder = walk.enter(static_cast<qint32>(number));
        if (folder == -1)
            return systemError(QStringLiteral("cannot be opened"), errno);
        if (hasMade_[place] && layer_.faccessat(folder, ".", W_OK | X_OK) == -1)
            return systemError(QStringLiteral("lets nothing be removed from it"), errno);
        if (!record_.entries[place].isMade())
            return {};
        const auto names = layer_.entriesAt(folder);
        if (!names)
            return systemError(QStringLiteral("cannot be read"), errno);
        // That those which were made are there is found out one by one.
        return names->size() == made_[place] ? QString() : QStringLiteral("holds something else now");
    }

    FolderLayer &layer_;
    const Record &record_;
    const EarlierUndo earlier_;
    /// For each folder, how many entries of the record it holds, and if any was made.
    std::vector<qsizetype> made_;
    std::vector<bool> hasMade_;
    bool targetHasMade_ = false;
};

/// Whether the last entry is one that an earlier undo may have removed, or that no undo removes.
bool isDoneWith(FolderLayer &layer, RecordWalk &walk, const Record &record)
{
    const Record::Entry &last = record.entries.back();
    if (!last.isMade())
        return walk.enter(static_cast<qint32>(record.entries.size() - 1)) != -1;
    const int folder = walk.enter(last.folder);
    struct stat information = {};
    return (folder == -1 ||
            layer.fstatat(folder, last.name.constData(), &information, AT_SYMLINK_NOFOLLOW) == -1) &&
           errno == ENOENT;
}

/// What an earlier undo has not come to.
Record withoutRemoved(FolderLayer &layer, const Record &record, int target)
{
    Record present = record;
    RecordWalk walk(layer, record, target);
    while (!present.entries.empty() && isDoneWith(layer, walk, present))
        present.entries.pop_back();
    walk.lockAgain();
    return present;
}

UndoOutcome undoIn(FolderLayer &layer, const Record &record, int target, EarlierUndo earlier)
{
    RecordWalk walk(layer, record, target);
    const QString difference = Comparison(layer, record, earlier).compare(walk);
    if (!difference.isEmpty()) {
        walk.lockAgain();
        return {false, difference};
    }
    Removal removal(layer, record);
    removal.remove(walk);
    if (removal.remains().isEmpty())
        return {true, {}};
    walk.lockAgain();
    return {false, removal.remains(), removal.rest()};
}

} // namespace

UndoOutcome undo(const Record &record, EarlierUndo earlier)
{
    return undo(record, FolderLayer::real(), earlier);
}

UndoOutcome undo(const Record &record, FolderLayer &layer, EarlierUndo earlier)
{
    const QString target = lineText(record.target);
    const FileDescriptor folder(layer, layer.open(record.target, O_PATH | O_DIRECTORY | O_NOFOLLOW));
    struct stat information = {};
    if (!folder.isOpen() || layer.fstat(folder.get(), &information) == -1)
        return {false, systemError(QStringLiteral("the folder “%1” cannot be used").arg(target), errno)};
    if (FileIdentity(information) != record.targetIdentity)
        return {false, QStringLiteral("another folder is where “%1” was").arg(target)};
    if (earlier == EarlierUndo::None)
        return undoIn(layer, record, folder.get(), earlier);
    return undoIn(layer, withoutRemoved(layer, record, folder.get()), folder.get(), earlier);
}

} // namespace Creation
