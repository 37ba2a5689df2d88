// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBItemStep.h"

std::optional<QNBDropPlace> QNBPlaceForStep(const QNBHierarchyItem &item, QNBItemStep step)
{
    const QNBHierarchyItemPtr parent = item.parent();
    const std::size_t place = parent ? parent->indexOfChild(&item) : QNBHierarchyItem::notFound;
    if (place == QNBHierarchyItem::notFound)
        return std::nullopt;
    const int index = static_cast<int>(place);

    switch (step) {
    case QNBItemStep::Up:
        if (index > 0)
            return QNBDropPlace{parent, index - 1};
        break;
    case QNBItemStep::Down:
        if (parent->childAtIndex(index + 1))
            return QNBDropPlace{parent, index + 2};
        break;
    case QNBItemStep::IntoFolderAbove:
        if (const QNBHierarchyItemPtr folder = parent->childAtIndex(index - 1);
            folder && folder->isDirectory())
            return QNBDropPlace{folder, static_cast<int>(folder->numberOfChildren())};
        break;
    case QNBItemStep::OutOfFolder:
        if (const QNBHierarchyItemPtr grandparent = parent->parent())
            return QNBDropPlace{grandparent, static_cast<int>(grandparent->indexOfChild(parent.get())) + 1};
        break;
    }
    return std::nullopt;
}
