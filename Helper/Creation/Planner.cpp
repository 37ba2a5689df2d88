// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Planner.h"

#include "Helper/Creation/ItemName.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBHierarchyDepth.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Creation {

namespace {

constexpr quint16 ownerRights = 0700;

quint16 modeOf(const QNBHierarchyItem &item)
{
    constexpr std::uint32_t all = 7;
    unsigned mode = 0;
    for (const std::uint32_t digit : item.permissionTriple())
        mode = mode << 3 | (digit & all);
    return static_cast<quint16>(mode);
}

quint8 labelOf(const QNBHierarchyItem &item)
{
    // As the pane looks for the colour.
    const quint64 label = QNBFinderLabelForColor(item.colorName().toLower());
    return label == QNBNotFound ? 0 : static_cast<quint8>(label);
}

} // namespace

Planner::Planner(FolderLayer &layer, const Options &options)
    : layer_(layer)
    , options_(options)
    , contents_(layer, options.contentFolder)
{
}

Plan Planner::plan(const QNBHierarchyItem &root, const QString &target)
{
    plan_.target_ = target;
    if (openTarget(target)) {
        levels_.push_back(
            {&root, Operation::noOperation, true, DiskNames::areCaseBlind(layer_, target_->get())});
        walk();
    }
    plan_.contentFolder_ = contents_.folder();
    plan_.contents_ = contents_.contents();
    return std::move(plan_);
}

bool Planner::openTarget(const QString &target)
{
    const auto reject = [this](int error) {
        addProblem({}, systemError(QStringLiteral("the folder cannot be used"), error));
        return false;
    };
    if (target.contains(QChar(u'\0')))
        return reject(EINVAL);
    const auto resolved = layer_.realpath(QFile::encodeName(target));
    if (!resolved)
        return reject(errno);
    target_.emplace(layer_, layer_.open(*resolved, O_PATH | O_DIRECTORY | O_NOFOLLOW));
    struct stat information = {};
    if (!target_->isOpen() || layer_.fstat(target_->get(), &information) == -1)
        return reject(errno);
    chain_.emplace(layer_, target_->get());
    plan_.resolvedTarget_ = *resolved;
    plan_.targetIdentity_ = FileIdentity(information);
    return true;
}

void Planner::walk()
{
    while (!levels_.empty()) {
        Level &level = levels_.back();
        if (level.next == level.item->children().size()) {
            leaveFolder();
            continue;
        }
        const QNBHierarchyItem &item = *level.item->children()[level.next++];
        if (levels_.size() > static_cast<std::size_t>(QNBHierarchyDepth::deepest)) {
            // No deeper one can be stored; and this may be a circle.
            fail(item, QStringLiteral("the folders are nested too deep"));
            return;
        }
        planItem(item);
    }
}

void Planner::planItem(const QNBHierarchyItem &item)
{
    // Of a longer name, which many items may share, no more need be seen to know that it is too long.
    QByteArray name = item.filename().left(ItemName::mostBytes + 1).toUtf8();
    if (const QString problem = ItemName::problem(item.filename(), name); !problem.isEmpty()) {
        fail(item, problem);
        return;
    }
    Level &level = levels_.back();
    const auto place = placeOf(item, name);
    if (!place || (*place == Place::Taken && !resolveConflict(item, name)))
        return;
    level.names.insert(level.key(name));

    Operation operation;
    operation.folder = level.operation;
    operation.name = name;
    const bool isThere = *place == Place::Folder;
    if (isThere) {
        if (!chain_->enter(name.constData(), O_PATH)) {
            fail(item, systemError(QStringLiteral("the folder cannot be used"), errno));
            return;
        }
        operation.kind = Operation::Kind::UseFolder;
        operation.identity = FileIdentity(chain_->information());
    } else {
        checkFolder();
        operation.kind = item.isDirectory() ? Operation::Kind::MakeFolder : Operation::Kind::MakeFile;
        operation.mode = modeOf(item);
        operation.label = labelOf(item);
        if (!item.isDirectory() && !item.contentFilename().isEmpty()) {
            const ContentFolder::Found found = contents_.find(item.contentFilename());
            if (!found.problem.isEmpty()) {
                fail(item, found.problem);
                return;
            }
            operation.content = found.content;
        }
    }
    const auto number = static_cast<qint32>(plan_.operations_.size());
    plan_.operations_.push_back(operation);
    if (item.isDirectory())
        levels_.push_back(
            {&item, number, isThere,
             isThere ? DiskNames::areCaseBlind(layer_, chain_->descriptor()) : level.isCaseBlind});
}

/// What is where an item wants to be; none if that is not to be found out.
std::optional<Planner::Place> Planner::placeOf(const QNBHierarchyItem &item, const QByteArray &name)
{
    const Level &level = levels_.back();
    if (level.names.contains(level.key(name)))
        return Place::Taken;
    if (!level.isThere)
        return Place::Free;
    struct stat there = {};
    if (layer_.fstatat(chain_->descriptor(), name.constData(), &there, AT_SYMLINK_NOFOLLOW) == 0)
        return item.isDirectory() && S_ISDIR(there.st_mode) ? Place::Folder : Place::Taken;
    if (errno == ENOENT)
        return Place::Free;
    fail(item, systemError(QStringLiteral("its place cannot be looked at"), errno));
    return {};
}

bool Planner::resolveConflict(const QNBHierarchyItem &item, QByteArray &name)
{
    const QString shown = path(item);
    if (options_.onConflict == OnConflict::Refuse) {
        plan_.conflicts_.append({shown, {}});
        return false;
    }
    if (!levels_.back().takenNames && !collectTakenNames())
        return fail(item, systemError(QStringLiteral("no other name can be looked for"), errno));
    const QString newName = levels_.back().takenNames->takeUniqueName(item.filename());
    name = newName.toUtf8();
    if (const QString problem = ItemName::problem(newName, name); !problem.isEmpty())
        return fail(item,
                    QStringLiteral("something of that name is there, and for another one %1").arg(problem));
    plan_.conflicts_.append({shown, newName});
    return true;
}

/// The items that are still to come keep their names, too.
bool Planner::collectTakenNames()
{
    Level &level = levels_.back();
    TakenNames taken;
    if (level.isThere) {
        const auto entries = layer_.entriesAt(chain_->descriptor());
        if (!entries)
            return false;
        for (const QByteArray &entry : *entries)
            taken.add(QString::fromUtf8(entry));
    }
    for (const QNBHierarchyItemPtr &child : level.item->children()) {
        if (child->filename().size() <= ItemName::mostBytes)
            taken.add(child->filename());
    }
    level.takenNames = std::move(taken);
    return true;
}

/// That nothing can be made in the folder is said once.
void Planner::checkFolder()
{
    Level &level = levels_.back();
    if (level.isThere && !level.isChecked && layer_.faccessat(chain_->descriptor(), ".", W_OK | X_OK) == -1)
        addProblem(plan_.path(level.operation),
                   systemError(QStringLiteral("nothing can be created in the folder"), errno));
    level.isChecked = true;
}

void Planner::leaveFolder()
{
    const Level &level = levels_.back();
    const qint32 number = level.operation;
    if (number != Operation::noOperation) {
        const Operation &made = plan_.operations_[static_cast<std::size_t>(number)];
        const bool isEmpty = static_cast<std::size_t>(number) + 1 == plan_.operations_.size();
        if (made.kind == Operation::Kind::MakeFolder && !isEmpty &&
            (made.mode & ownerRights) != ownerRights) {
            Operation finish;
            finish.kind = Operation::Kind::FinishFolder;
            finish.folder = number;
            finish.mode = made.mode;
            plan_.operations_.push_back(finish);
        }
    }
    const bool wasThere = level.isThere;
    levels_.pop_back();
    if (wasThere && !levels_.empty() && !chain_->leave()) {
        addProblem(plan_.path(number), systemError(QStringLiteral("the folder was moved"), errno));
        levels_.clear();
    }
}

QString Planner::path(const QNBHierarchyItem &item) const
{
    const QString name = ItemName::shownName(item.filename());
    const qint32 folder = levels_.back().operation;
    return folder == Operation::noOperation ? name : plan_.path(folder) + u'/' + name;
}

void Planner::addProblem(const QString &path, const QString &reason)
{
    plan_.problems_.append({path, reason});
}

bool Planner::fail(const QNBHierarchyItem &item, const QString &reason)
{
    addProblem(path(item), reason);
    return false;
}

} // namespace Creation
