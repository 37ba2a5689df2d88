// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/ContentFolder.h"
#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/DiskNames.h"
#include "Helper/Creation/FolderChain.h"
#include "Helper/Creation/TakenNames.h"
#include "Platform/Files/FileDescriptor.h"

#include <QSet>
#include <optional>

class QNBHierarchyItem;

namespace Creation {

/// Makes one plan: walks the tree and, where folders of it are there already, the disk beside it.
class Planner
{
public:
    Planner(FolderLayer &layer, const Options &options);

    Plan plan(const QNBHierarchyItem &root, const QString &target);

private:
    /// A folder whose items are being planned.
    struct Level
    {
        const QNBHierarchyItem *item;
        /// That makes or uses it.
        qint32 operation;
        /// Whether it is there already; then it is the end of the chain.
        bool isThere;
        /// Whether names in it are the same that differ in case only.
        bool isCaseBlind;
        /// Whether it was looked at if anything can be made in it.
        bool isChecked = false;
        std::size_t next = 0;
        /// The names given in it, or their keys if it is blind.
        QSet<QByteArray> names{};
        /// All names that are taken in it, known from the first conflict on.
        std::optional<TakenNames> takenNames{};

        QByteArray key(const QByteArray &name) const { return isCaseBlind ? DiskNames::key(name) : name; }
    };
    enum class Place { Free, Folder, Taken };

    bool openTarget(const QString &target);
    void walk();
    void planItem(const QNBHierarchyItem &item);
    void leaveFolder();
    bool resolveConflict(const QNBHierarchyItem &item, QByteArray &name);
    std::optional<Place> placeOf(const QNBHierarchyItem &item, const QByteArray &name);
    void checkFolder();
    bool collectTakenNames();
    QString path(const QNBHierarchyItem &item) const;
    void addProblem(const QString &path, const QString &reason);
    bool fail(const QNBHierarchyItem &item, const QString &reason);

    FolderLayer &layer_;
    const Options options_;
    Plan plan_;
    ContentFolder contents_;
    std::optional<FileDescriptor> target_;
    std::optional<FolderChain> chain_;
    std::vector<Level> levels_;
};

} // namespace Creation
