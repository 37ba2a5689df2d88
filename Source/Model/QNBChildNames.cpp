// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBChildNames.h"

#include "Source/Model/QNBLowerCase.h"

#include <QHash>
#include <algorithm>

QNBChildNames::QNBChildNames(const QNBHierarchyItem::Children &children)
{
    byHash_.reserve(children.size());
    for (const QNBHierarchyItemPtr &child : children)
        add(*child);
}

bool QNBChildNames::isTaken(const QString &name, const QNBHierarchyItem *exceptFor) const
{
    const QNBLowerCase lowerCase(name);
    if (lowerCase.view().isEmpty())
        return false;
    const auto [first, last] = byHash_.equal_range(qHash(lowerCase.view()));
    return std::any_of(first, last, [&](const auto &filed) {
        const QNBHierarchyItem &child = *filed.second;
        return QNBLowerCase(child.filename()).view() == lowerCase.view() &&
               !(exceptFor && child.isEqualTo(*exceptFor));
    });
}

void QNBChildNames::add(const QNBHierarchyItem &child)
{
    byHash_.emplace(qHash(QNBLowerCase(child.filename()).view()), &child);
}

bool QNBChildNames::remove(const QNBHierarchyItem &child)
{
    const std::size_t before = byHash_.size();
    auto [next, last] = byHash_.equal_range(qHash(QNBLowerCase(child.filename()).view()));
    while (next != last)
        next = next->second == &child ? byHash_.erase(next) : std::next(next);
    return byHash_.size() < before;
}
