// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBHierarchyDepth.h"

#include <algorithm>
#include <utility>

namespace QNBHierarchyDepth {

int ofItem(const QNBHierarchyItem &item)
{
    int depth = 0;
    for (QNBHierarchyItemPtr parent = item.parent(); parent; parent = parent->parent())
        ++depth;
    return depth;
}

int belowItem(const QNBHierarchyItem &item)
{
    int deepestFound = 0;
    std::vector<std::pair<const QNBHierarchyItem *, int>> pending{{&item, 0}};
    while (!pending.empty()) {
        const auto [folder, depth] = pending.back();
        pending.pop_back();
        deepestFound = std::max(deepestFound, depth);
        for (const QNBHierarchyItemPtr &child : folder->children())
            pending.emplace_back(child.get(), depth + 1);
    }
    return deepestFound;
}

} // namespace QNBHierarchyDepth
