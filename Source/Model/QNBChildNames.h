// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <unordered_map>

/// Finds a name among many children of one folder without a look at each.
///
/// Holds the children themselves, by the hashes of their names in lower case: an answer is about what they
/// are called now. The folder tells of each child that comes, goes, or gets another name.
class QNBChildNames
{
public:
    /// A folder with a longer name in it should have no index: thousands of its children may share that name,
    /// and each would have all of it looked at.
    static constexpr qsizetype longest = 1000;

    explicit QNBChildNames(const QNBHierarchyItem::Children &children);

    /// Whether a child other than \a exceptFor (by uid; may be null) has this name, without regard to case.
    /// Nothing has an empty one.
    bool isTaken(const QString &name, const QNBHierarchyItem *exceptFor) const;

    void add(const QNBHierarchyItem &child);
    /// False for what is not there. A child that gets another name leaves before, and comes back after.
    bool remove(const QNBHierarchyItem &child);

private:
    std::unordered_multimap<std::size_t, const QNBHierarchyItem *> byHash_;
};
