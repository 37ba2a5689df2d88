// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Execution.h"

#include "Helper/Creation/ContentBytes.h"
#include "Helper/Creation/FolderChain.h"
#include "Helper/Creation/Removal.h"
#include "Platform/Files/FileCatalog.h"
#include "Platform/Files/FileDescriptor.h"
#include "Shared/Source/QNBShared.h"

#include <QFile>
#include <QLoggingCategory>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <set>
#include <utility>

namespace Creation {

namespace {

Q_LOGGING_CATEGORY(lcCreation, "quenby.helper.creation")

constexpr mode_t ownerRights = 0700;

/// Executes one plan.
class Execution
{
public:
    Execution(FolderLayer &layer, const Plan &plan, Journal *journal)
        : layer_(layer)
        , plan_(plan)
        , journal_(journal)
        , contents_(layer, plan)
        , entries_(plan.operations().size(), Record::inTarget)
    {
    }

    Outcome run(const Progress &progress)
    {
        Outcome outcome;
        if (!plan_.canBeExecuted()) {
            outcome.error = QStringLiteral("the plan cannot be executed");
            return outcome;
        }
        outcome.succeeded = openTarget() && performAll(progress);
        chain_.reset();
        if (outcome.succeeded) {
            outcome.record = std::move(record_);
            return outcome;
        }
        outcome.cancelled = isCancelled_;
        undo();
        outcome.error = error_;
        return outcome;
    }

private:
    /// The times of a folder that was there, as they were.
    struct UsedFolder
    {
        qint32 entry;
        FolderLayer::Times times;
    };

    bool openTarget()
    {
        record_.target = plan_.resolvedTarget();
        record_.targetIdentity = plan_.targetIdentity();
        record_.entries.reserve(plan_.operations().size());
        target_.emplace(layer_, layer_.open(record_.target, O_PATH | O_DIRECTORY | O_NOFOLLOW));
        struct stat information = {};
        if (!target_->isOpen() || layer_.fstat(target_->get(), &information) == -1)
            return fail(QStringLiteral("cannot open the folder “%1”").arg(plan_.target()), errno);
        if (FileIdentity(information) != record_.targetIdentity)
            return fail(QStringLiteral("cannot use the folder “%1”").arg(plan_.target()), ESTALE);
        chain_.emplace(layer_, target_->get());
        keepTimes(Record::inTarget, information);
        return true;
    }

    bool performAll(const Progress &progress)
    {
        const auto total = static_cast<qsizetype>(plan_.operations().size());
        for (qsizetype i = 0; i < total; ++i) {
            if (!perform(i))
                return false;
            if (progress && !progress(i + 1, total)) {
                isCancelled_ = true;
                error_ = QStringLiteral("cancelled");
                return false;
            }
        }
        return true;
    }

    bool perform(qsizetype number)
    {
        const Operation &step = plan_.operations()[static_cast<std::size_t>(number)];
        if (!enter(step.folder))
            return fail(doing("cannot go to the folder of “%1”", number), errno);
        switch (step.kind) {
        case Operation::Kind::MakeFolder:
            return makeFolder(step, number) ||
                   failToMake(step, doing("cannot create the folder “%1”", number), errno);
        case Operation::Kind::UseFolder:
            return useFolder(step, number) || fail(doing("cannot use the folder “%1”", number), errno);
        case Operation::Kind::MakeFile:
            return makeFile(step, number) ||
                   failToMake(step, doing("cannot create the file “%1”", number), errno);
        case Operation::Kind::FinishFolder:
            return finishFolder(step) || fail(doing("cannot set the permissions of “%1”", number), errno);
        }
        return false;
    }

    /// Operations follow each other in such a way that the folder is on the chain.
    bool enter(qint32 folder)
    {
        while (!way_.empty() && way_.back() != folder) {
            way_.pop_back();
            if (!chain_->leave())
                return false;
        }
        return true;
    }

    bool makeFolder(const Operation &step, qsizetype number)
    {
        const int parent = chain_->descriptor();
        const char *name = step.name.constData();
        if (layer_.mkdirat(parent, name, ownerRights) == -1)
            return false;
        if (!chain_->enter(name, O_RDONLY) && !(errno == EACCES && enterUnreadable(name))) {
            const int error = errno;
            noteUnopened(step, number, parent);
            errno = error;
            return false;
        }
        way_.push_back(static_cast<qint32>(number));
        Record::Entry &entry = note(step, number, Record::Entry::Kind::Folder, chain_->information());
        const bool isOpenToOwner = (entry.mode & ownerRights) == ownerRights;
        const bool isReady = (isOpenToOwner || setMode(entry, ownerRights)) &&
                             setLabel(step, chain_->descriptor()) &&
                             (isFinishedLater(number) || setMode(entry, step.mode));
        if (journal_)
            journal_->note(number, entry);
        return isReady;
    }

    /// Goes into a new folder that the umask has closed to its owner.
    bool enterUnreadable(const char *name)
    {
        const int flags = O_PATH | O_DIRECTORY | O_NOFOLLOW;
        const FileDescriptor folder(layer_, layer_.openat(chain_->descriptor(), name, flags));
        return folder.isOpen() && layer_.chmodOpen(folder.get(), ownerRights) == 0 &&
               chain_->enter(name, O_RDONLY);
    }

    bool isFinishedLater(qsizetype number) const
    {
        const auto &operations = plan_.operations();
        const auto next = static_cast<std::size_t>(number) + 1;
        return (operations[next - 1].mode & ownerRights) != ownerRights && next < operations.size() &&
               operations[next].folder == number;
    }

    /// The bits above the permissions are inherited from the folder above.
    bool setMode(Record::Entry &folder, mode_t mode)
    {
        const mode_t inherited = chain_->information().st_mode & (ALLPERMS & ~ACCESSPERMS);
        struct stat now = {};
        if (layer_.fchmod(chain_->descriptor(), mode | inherited) == -1 ||
            layer_.fstat(chain_->descriptor(), &now) == -1)
            return false;
        // Some disks keep no modes, and say nothing of it.
        folder.mode = static_cast<quint16>(now.st_mode & ALLPERMS);
        return true;
    }

    bool finishFolder(const Operation &step)
    {
        const auto number = entries_[static_cast<std::size_t>(step.folder)];
        Record::Entry &entry = record_.entries[static_cast<std::size_t>(number)];
        if (!chain_->openParent() || !setMode(entry, step.mode))
            return false;
        if (journal_)
            journal_->note(step.folder, entry);
        return true;
    }

    bool useFolder(const Operation &step, qsizetype number)
    {
        if (!chain_->enter(step.name.constData(), O_PATH))
            return false;
        way_.push_back(static_cast<qint32>(number));
        const struct stat &information = chain_->information();
        if (FileIdentity(information) != step.identity) {
            errno = ESTALE;
            return false;
        }
        note(step, number, Record::Entry::Kind::UsedFolder, information);
        keepTimes(entries_[static_cast<std::size_t>(number)], information);
        return true;
    }

    bool makeFile(const Operation &step, qsizetype number)
    {
        const int folder = chain_->descriptor();
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
        FileDescriptor file(layer_, layer_.openat(folder, step.name.constData(), flags, step.mode));
        if (!file.isOpen())
            return false;
        // To be labelled a file has to be open to its owner, who is closed out by its mode or by the umask.
        const bool isFilled =
            (step.content == Operation::noContent || contents_.writeTo(file.get(), step.content)) &&
            (step.label == 0 ||
             (layer_.fchmod(file.get(), step.mode | S_IWUSR) == 0 && setLabel(step, file.get())));
        int error = isFilled ? 0 : errno;
        // The removal needs to know which file it is even if the first way to ask fails.
        struct stat information = {};
        if (layer_.fstat(file.get(), &information) == -1) {
            error = error == 0 ? errno : error;
            if (layer_.fstatat(file.get(), "", &information, AT_EMPTY_PATH) == -1) {
                noteLeft(number);
                errno = error;
                return false;
            }
        }
        // Only few were made with another mode: those that the umask or the label has changed.
        if (error == 0 && (information.st_mode & ALLPERMS) != step.mode &&
            (layer_.fchmod(file.get(), step.mode) == -1 || layer_.fstat(file.get(), &information) == -1))
            error = errno;
        note(step, number, Record::Entry::Kind::File, information);
        if (file.close() == -1 && error == 0)
            error = errno;
        errno = error;
        return error == 0;
    }

    /// A disk that keeps no labels is no reason to create nothing.
    bool setLabel(const Operation &step, int descriptor)
    {
        if (step.label == 0)
            return true;
        FinderInfo information;
        information.setFlags(QNBFinderFlagsWithLabel(information.flags(), step.label));
        const QByteArray attribute = information.attribute();
        if (layer_.fsetxattr(descriptor, FileCatalog::finderInfoAttribute, attribute.constData(),
                             static_cast<size_t>(attribute.size())) == 0)
            return true;
        if (errno != ENOTSUP)
            return false;
        if (!std::exchange(hasToldOfLabels_, true))
            qCWarning(lcCreation) << "no labels are kept on the disk of" << plan_.target();
        return true;
    }

    Record::Entry &note(const Operation &step, qsizetype number, Record::Entry::Kind kind,
                        const struct stat &information)
    {
        Record::Entry entry;
        entry.kind = kind;
        entry.mode = static_cast<quint16>(information.st_mode & ALLPERMS);
        if (step.folder != Operation::noOperation)
            entry.folder = entries_[static_cast<std::size_t>(step.folder)];
        entry.name = step.name;
        entry.identity = FileIdentity(information);
        entry.size = information.st_size;
        entry.modified = information.st_mtim;
        entries_[static_cast<std::size_t>(number)] = static_cast<qint32>(record_.entries.size());
        if (journal_)
            journal_->note(number, entry);
        return record_.entries.emplace_back(std::move(entry));
    }

    /// A folder was made and cannot be opened.
    void noteUnopened(const Operation &step, qsizetype number, int parent)
    {
        struct stat information = {};
        if (layer_.fstatat(parent, step.name.constData(), &information, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISDIR(information.st_mode))
            note(step, number, Record::Entry::Kind::Folder, information);
        else
            noteLeft(number);
    }

    void noteLeft(qsizetype number)
    {
        left_ = QStringLiteral("“%1” may have been left").arg(plan_.path(number));
    }

    void keepTimes(qint32 entry, const struct stat &information)
    {
        used_.push_back({entry, {information.st_atim, information.st_mtim}});
    }

    void undo()
    {
        Removal removal(layer_, record_);
        if (!record_.isEmpty()) {
            RecordWalk walk(layer_, record_, target_->get());
            removal.remove(walk);
            restoreTimes(walk);
        }
        for (const QString &left : {left_, removal.remains()}) {
            if (!left.isEmpty())
                error_ += QStringLiteral("; ") + left;
        }
    }

    /// Of the folders in which something was made. Only their owner may do that; others cannot be helped.
    void restoreTimes(RecordWalk &walk)
    {
        std::set<qint32> touched;
        for (const Record::Entry &entry : record_.entries) {
            if (entry.isMade())
                touched.insert(entry.folder);
        }
        for (auto used = used_.crbegin(); used != used_.crend(); ++used) {
            if (touched.contains(used->entry) && walk.enter(used->entry) != -1)
                layer_.utimensat(walk.enter(used->entry), ".", used->times);
        }
    }

    QString doing(const char *what, qsizetype number) const
    {
        return QString::fromUtf8(what).arg(plan_.path(number));
    }

    /// What is in the way may have been made here: not every disk says beforehand which names it takes for
    /// the same.
    bool failToMake(const Operation &step, const QString &doing, int error)
    {
        struct stat there = {};
        if (error != EEXIST ||
            layer_.fstatat(chain_->descriptor(), step.name.constData(), &there, AT_SYMLINK_NOFOLLOW) == -1)
            return fail(doing, error);
        const auto &entries = record_.entries;
        const auto own = std::find_if(entries.cbegin(), entries.cend(), [&](const Record::Entry &entry) {
            return entry.identity == FileIdentity(there);
        });
        if (own == entries.cend())
            return fail(doing, error);
        error_ = QStringLiteral("%1: the disk takes its name for that of “%2”")
                     .arg(doing, record_.path(own - entries.cbegin()));
        return false;
    }

    bool fail(const QString &doing, int error)
    {
        if (error == ESTALE)
            error_ = QStringLiteral("%1: something else has taken its place").arg(doing);
        else if (error == EEXIST)
            error_ = QStringLiteral("%1: something of that name has appeared there").arg(doing);
        else
            error_ = systemError(doing, error);
        return false;
    }

    FolderLayer &layer_;
    const Plan &plan_;
    Journal *const journal_;
    ContentBytes contents_;
    std::optional<FileDescriptor> target_;
    std::optional<FolderChain> chain_;
    /// The operations of the folders on the chain, below the target.
    std::vector<qint32> way_;
    /// For each operation that makes or uses something, its entry in the record.
    std::vector<qint32> entries_;
    Record record_;
    std::vector<UsedFolder> used_;
    QString error_;
    QString left_;
    bool isCancelled_ = false;
    bool hasToldOfLabels_ = false;
};

} // namespace

Outcome execute(const Plan &plan, const Progress &progress, Journal *journal)
{
    return execute(plan, progress, FolderLayer::real(), journal);
}

Outcome execute(const Plan &plan, const Progress &progress, FolderLayer &layer, Journal *journal)
{
    return Execution(layer, plan, journal).run(progress);
}

} // namespace Creation
