// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/Operation.h"

#include <QList>
#include <QStringList>
#include <vector>

class FolderLayer;
class QNBHierarchyItem;

namespace Creation {

/// What becomes of an item whose place is taken.
enum class OnConflict {
    /// It gets the first free name, "name-1.ext", "name-2.ext" …, compared without regard to case.
    UniqueName,
    /// Nothing at all is created.
    Refuse,
};

struct Options
{
    OnConflict onConflict = OnConflict::UniqueName;
    /// Where the files are whose bytes the new ones receive.
    QString contentFolder = defaultContentFolder();

    static QString defaultContentFolder();
};

/// Why a tree cannot be created.
struct Problem
{
    /// Of the item, below the target, in one line as shown to people; empty for the target itself.
    QString path;
    QString reason;
};

/// An item whose place is taken: by something on the disk, or by another item of the same name, or of one
/// that is the same to the disk.
struct Conflict
{
    /// As above.
    QString path;
    /// What the item will be called; empty if that was refused.
    QString newName;
};

/// All that will be done to create a tree in a folder, and all that stands in the way. The disk as it was is
/// part of it: where something else is found later, the execution fails.
class Plan
{
public:
    Plan() = default;

    /// The folder, as it was given.
    QString target() const { return target_; }
    /// The same without links, and which folder that was.
    QByteArray resolvedTarget() const { return resolvedTarget_; }
    FileIdentity targetIdentity() const { return targetIdentity_; }

    /// In the order of execution: the items of a folder in their order, each folder directly before what is
    /// in it.
    const std::vector<Operation> &operations() const { return operations_; }
    /// The folder of content files, and what is needed of it.
    const QByteArray &contentFolder() const { return contentFolder_; }
    const std::vector<Content> &contents() const { return contents_; }
    const QList<Conflict> &conflicts() const { return conflicts_; }
    const QList<Problem> &problems() const { return problems_; }
    /// Whether there is no problem, and no conflict that was refused.
    bool canBeExecuted() const;

    /// The path below the target of what an operation makes, uses or finishes, in one line for people. The
    /// beginning of a very long one is left out.
    QString path(qsizetype operation) const;
    /// The operations, each in one line for people.
    QStringList lines() const;

private:
    friend class Planner;
    friend class JournalFormat;

    QString target_;
    QByteArray resolvedTarget_;
    FileIdentity targetIdentity_;
    std::vector<Operation> operations_;
    QByteArray contentFolder_;
    std::vector<Content> contents_;
    QList<Conflict> conflicts_;
    QList<Problem> problems_;
};

/// Plans the creation of what is below \a root (its own name, permissions and label do not count) in the
/// folder \a target, which may be reached through links. Reads the disk and changes nothing.
///
/// A folder that is there is merged into. Where anything else is, a link to a folder too, the item gets
/// another name or is refused. Items whose names are equal but for case or composition are two where the
/// disk tells them apart. Where it says that it does not, the place of the later one counts as taken; where
/// it does not without saying so, the execution fails.
///
/// Only the low three bits of a permission digit count. A colour that is no label's counts as none.
Plan plan(const QNBHierarchyItem &root, const QString &target, const Options &options = {});
/// The same with system calls of one's own.
Plan plan(const QNBHierarchyItem &root, const QString &target, const Options &options, FolderLayer &layer);

} // namespace Creation
