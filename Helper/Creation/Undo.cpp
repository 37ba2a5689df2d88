// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Record.h"
#include "Helper/Creation/Removal.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/LineText.h"

#include <QFile>
#include <QStringList>
#include <cerrno>
#include <deque>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

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

/// The undo of what was made in one folder, in two steps: others are looked at in between.
class FolderUndo
{
public:
    FolderUndo(FolderLayer &layer, Record record)
        : layer_(layer)
        , record_(std::move(record))
        , target_(layer, layer.open(record_.target, O_PATH | O_DIRECTORY | O_NOFOLLOW))
    {
        struct stat information = {};
        const QString shown = lineText(record_.target);
        if (!target_.isOpen() || layer.fstat(target_.get(), &information) == -1)
            obstacle_ = systemError(QStringLiteral("the folder “%1” cannot be used").arg(shown), errno);
        else if (FileIdentity(information) != record_.targetIdentity)
            obstacle_ = QStringLiteral("another folder is where “%1” was").arg(shown);
    }

    void leaveOutWhatIsRemoved() { record_ = withoutRemoved(layer_, record_, target_.get()); }
    const Record &record() const { return record_; }

    /// What stands in the way; empty if nothing does.
    QString compare(EarlierUndo earlier)
    {
        if (!obstacle_.isEmpty())
            return obstacle_;
        walk_.emplace(layer_, record_, target_.get());
        const QString difference = Comparison(layer_, record_, earlier).compare(*walk_);
        // With a few descriptors for each of the folders.
        walk_->enter(Record::inTarget);
        return difference;
    }
    /// What was left, none if that is nothing; and why, in \a remains.
    std::optional<Record> remove(QString *remains)
    {
        Removal removal(layer_, record_);
        removal.remove(*walk_);
        *remains = removal.remains();
        if (remains->isEmpty())
            return {};
        walk_->lockAgain();
        return removal.rest();
    }
    void lockAgain()
    {
        if (walk_)
            walk_->lockAgain();
    }
    bool isReachable() const { return obstacle_.isEmpty(); }

private:
    FolderLayer &layer_;
    Record record_;
    FileDescriptor target_;
    QString obstacle_;
    std::optional<RecordWalk> walk_;
};

} // namespace

UndoOutcome undo(const Record &record, EarlierUndo earlier)
{
    return undo(record, FolderLayer::real(), earlier);
}

UndoOutcome undo(const Record &record, FolderLayer &layer, EarlierUndo earlier)
{
    return undo(Records{record}, layer, earlier);
}

UndoOutcome undo(const Records &records, EarlierUndo earlier)
{
    return undo(records, FolderLayer::real(), earlier);
}

UndoOutcome undo(const Records &records, FolderLayer &layer, EarlierUndo earlier)
{
    // The last one first.
    std::deque<FolderUndo> folders;
    bool mayBeRemoved = earlier == EarlierUndo::Unfinished;
    for (auto record = records.crbegin(); record != records.crend(); ++record) {
        FolderUndo &folder = folders.emplace_back(layer, *record);
        // The earlier undo came to a folder after it was done with the one before.
        if (mayBeRemoved && folder.isReachable())
            folder.leaveOutWhatIsRemoved();
        mayBeRemoved = mayBeRemoved && folder.isReachable() && folder.record().entries.empty();
    }
    for (FolderUndo &folder : folders) {
        const QString obstacle = folder.compare(earlier);
        if (obstacle.isEmpty())
            continue;
        for (FolderUndo &compared : folders)
            compared.lockAgain();
        return {false, obstacle};
    }
    Records rest;
    QStringList remains;
    for (FolderUndo &folder : folders) {
        QString left;
        if (std::optional<Record> kept = folder.remove(&left)) {
            rest.insert(rest.begin(), std::move(*kept));
            remains.append(left);
        }
    }
    return rest.empty() ? UndoOutcome{true, {}}
                        : UndoOutcome{false, remains.join(QStringLiteral("; ")), rest};
}

} // namespace Creation
