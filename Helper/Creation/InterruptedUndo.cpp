// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/InterruptedUndo.h"

#include "Helper/Creation/FileSystemTime.h"
#include "Helper/Creation/RecordWalk.h"
#include "Helper/Creation/Remains.h"
#include "Helper/Creation/SupportFile.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/LineText.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <optional>

namespace Creation {

namespace {

constexpr size_t blockSize = 64 * 1024;

class InterruptedUndo
{
public:
    InterruptedUndo(FolderLayer &layer, const JournalContent &journal)
        : layer_(layer)
        , journal_(journal)
        , next_(-1)
    {
        const auto &operations = journal.plan.operations();
        std::vector<qint32> entries(operations.size(), Record::inTarget);
        for (std::size_t i = 0; i < operations.size(); ++i) {
            const Operation &step = operations[i];
            if (step.kind == Operation::Kind::FinishFolder)
                continue;
            const std::optional<Record::Entry> &made = journal.made[i];
            Record::Entry entry = made.value_or(Record::Entry());
            entry.kind = kindOf(step);
            if (step.kind == Operation::Kind::UseFolder)
                entry.identity = step.identity;
            if (step.folder != Operation::noOperation)
                entry.folder = entries[std::size_t(step.folder)];
            entry.name = step.name;
            entries[i] = static_cast<qint32>(record_.entries.size());
            record_.entries.push_back(entry);
            places_.push_back({qsizetype(i), made.has_value()});
            if (entry.isMade() && made)
                next_ = -1;
            else if (entry.isMade() && next_ == -1)
                next_ = qsizetype(places_.size()) - 1;
        }
    }

    InterruptedUndoOutcome run()
    {
        const Plan &plan = journal_.plan;
        const FileDescriptor target(layer_,
                                    layer_.open(plan.resolvedTarget(), O_PATH | O_DIRECTORY | O_NOFOLLOW));
        struct stat information = {};
        if (!target.isOpen() || layer_.fstat(target.get(), &information) == -1)
            return {systemError(QStringLiteral("the folder “%1” cannot be used").arg(lineText(plan.target())),
                                errno),
                    true};
        if (FileIdentity(information) != plan.targetIdentity())
            return {QStringLiteral("another folder is where “%1” was").arg(lineText(plan.target())), true};
        RecordWalk walk(layer_, record_, target.get());
        for (auto number = qsizetype(record_.entries.size()) - 1; number >= 0; --number) {
            if (record_.entries[std::size_t(number)].isMade())
                remove(walk, number);
        }
        walk.lockAgain();
        return {remains_.text(), canBeTriedAgain_};
    }

private:
    /// Of an entry: the operation that it comes from, and whether what that made was noted.
    struct Place
    {
        qsizetype operation;
        bool isNoted;
    };

    static Record::Entry::Kind kindOf(const Operation &step)
    {
        if (step.kind == Operation::Kind::MakeFile)
            return Record::Entry::Kind::File;
        return step.kind == Operation::Kind::MakeFolder ? Record::Entry::Kind::Folder
                                                        : Record::Entry::Kind::UsedFolder;
    }

    void remove(RecordWalk &walk, qsizetype number)
    {
        const Record::Entry &entry = record_.entries[std::size_t(number)];
        const Place &place = places_[std::size_t(number)];
        const int folder = walk.enter(entry.folder);
        struct stat now = {};
        if (folder == -1 || layer_.fstatat(folder, entry.name.constData(), &now, AT_SYMLINK_NOFOLLOW) == -1) {
            // What is in a folder that is not ours is none of ours; the folder is told of itself.
            if (errno != ENOENT && errno != ENOTDIR && errno != ESTALE && errno != ELOOP)
                keepForNow(number, QStringLiteral("it cannot be reached"));
            return;
        }
        if (place.isNoted && FileIdentity(now) != entry.identity) {
            remains_.add(record_.path(number), QStringLiteral("something else has taken its place"));
            return;
        }
        if (!place.isNoted && number != next_) {
            remains_.add(record_.path(number), QStringLiteral("nobody noted whose it is"));
            return;
        }
        const bool isAsNoted = place.isNoted && (entry.isFolder() || isUnchanged(entry, now));
        if (!isAsNoted && !isUnfinished(folder, entry, place, now)) {
            remains_.add(record_.path(number), place.isNoted ? QStringLiteral("it was changed")
                                                             : QStringLiteral("it may be somebody else's"));
            return;
        }
        if (layer_.unlinkat(folder, entry.name.constData(), entry.isFolder() ? AT_REMOVEDIR : 0) == 0)
            return;
        if (errno == ENOTEMPTY || errno == EEXIST)
            remains_.add(record_.path(number), QStringLiteral("something else is in it"));
        else if (errno != ENOENT)
            keepForNow(number, QStringLiteral("it cannot be removed"));
    }

    void keepForNow(qsizetype number, const QString &reason)
    {
        remains_.add(record_.path(number), systemError(reason, errno));
        canBeTriedAgain_ = true;
    }

    static bool isUnchanged(const Record::Entry &entry, const struct stat &now)
    {
        return S_ISREG(now.st_mode) && now.st_size == entry.size &&
               FileSystemTime::of(now.st_mtim) == FileSystemTime::of(entry.modified);
    }

    /// Whether it can be what the creation had begun to make.
    bool isUnfinished(int folder, const Record::Entry &entry, const Place &place, const struct stat &now)
    {
        if (FileSystemTime::of(now.st_ctim) < journal_.begun)
            return false;
        if (entry.isFolder())
            return S_ISDIR(now.st_mode);
        return S_ISREG(now.st_mode) && now.st_nlink == 1 &&
               (now.st_size == 0 || (!place.isNoted && isBeginning(folder, entry, place, now)));
    }

    bool isBeginning(int folder, const Record::Entry &entry, const Place &place, const struct stat &now)
    {
        const Plan &plan = journal_.plan;
        const qint32 number = plan.operations()[std::size_t(place.operation)].content;
        if (number == Operation::noContent)
            return false;
        const Content &content = plan.contents()[std::size_t(number)];
        const SupportFile source(layer_, plan.contentFolder(), content.name);
        if (!source.isOpen() || FileIdentity(source.information()) != content.identity)
            return false;
        // By its mode it may be closed to its owner.
        const FileDescriptor found(layer_,
                                   layer_.openat(folder, entry.name.constData(), O_PATH | O_NOFOLLOW));
        struct stat opened = {};
        if (!found.isOpen() || layer_.fstat(found.get(), &opened) == -1 ||
            FileIdentity(opened) != FileIdentity(now))
            return false;
        const mode_t mode = now.st_mode & ALLPERMS;
        const bool isClosed = (mode & S_IRUSR) == 0;
        if (isClosed && layer_.chmodOpen(found.get(), mode | S_IRUSR) == -1)
            return false;
        const FileDescriptor file(
            layer_, layer_.openat(folder, entry.name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
        if (file.isOpen() && layer_.fstat(file.get(), &opened) == 0 &&
            FileIdentity(opened) == FileIdentity(now) && isBeginningOf(file.get(), source.descriptor()))
            return true;
        if (isClosed)
            layer_.chmodOpen(found.get(), mode);
        return false;
    }

    bool isBeginningOf(int file, int whole)
    {
        QByteArray block(blockSize, Qt::Uninitialized);
        for (;;) {
            const ssize_t size = layer_.read(file, block.data(), blockSize);
            if (size <= 0)
                return size == 0;
            QByteArray expected(size, Qt::Uninitialized);
            for (ssize_t done = 0; done < size;) {
                const ssize_t more = layer_.read(whole, expected.data() + done, size_t(size - done));
                if (more <= 0)
                    return false;
                done += more;
            }
            if (!block.startsWith(expected))
                return false;
        }
    }

    FolderLayer &layer_;
    const JournalContent &journal_;
    /// The operations that make or use something. Those of which nothing was noted have no identity.
    Record record_;
    std::vector<Place> places_;
    /// The entry after the last one that was noted; -1 if there is none.
    qsizetype next_;
    Remains remains_;
    bool canBeTriedAgain_ = false;
};

} // namespace

InterruptedUndoOutcome undo(const JournalContent &journal, FolderLayer &layer)
{
    return InterruptedUndo(layer, journal).run();
}

} // namespace Creation
