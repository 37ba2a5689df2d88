// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/EditedTree.h"

#include <algorithm>

std::vector<int> EditedTree::pathToMiddle(const QNBHierarchyItem &root)
{
    // All items in the order of their rows.
    std::vector<const QNBHierarchyItem *> rows;
    std::vector<const QNBHierarchyItem *> pending{&root};
    while (!pending.empty()) {
        const QNBHierarchyItem *item = pending.back();
        pending.pop_back();
        rows.push_back(item);
        for (auto child = item->children().rbegin(); child != item->children().rend(); ++child)
            pending.push_back(child->get());
    }
    const auto middle = rows.begin() + static_cast<std::ptrdiff_t>(rows.size() / 2);
    const QNBHierarchyItem *item = *std::find_if(
        middle, rows.end(), [](const QNBHierarchyItem *candidate) { return !candidate->isDirectory(); });
    std::vector<int> path;
    for (; item != &root; item = item->parent().get())
        path.push_back(static_cast<int>(item->parent()->indexOfChild(item)));
    std::reverse(path.begin(), path.end());
    return path;
}
