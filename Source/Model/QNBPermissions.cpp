// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPermissions.h"

namespace {

constexpr int ownerPlace = 100;
constexpr int groupPlace = 10;
constexpr quint32 storedBits = 0xf;

} // namespace

std::optional<QNBPermissions::Box> QNBPermissions::boxForTag(int tag)
{
    const auto &[owner, group, others] = QNBHierarchyItem::permissionKeys;
    if (tag == 0)
        return {};
    if (tag / ownerPlace != 0)
        return Box{owner, static_cast<quint32>(tag / ownerPlace)};
    if (tag / groupPlace != 0)
        return Box{group, static_cast<quint32>(tag / groupPlace)};
    return Box{others, static_cast<quint32>(tag)};
}

quint32 QNBPermissions::digit(const QVariantMap &permissions, const QString &key)
{
    return permissions.value(key).toUInt();
}

QVariantMap QNBPermissions::afterClick(QVariantMap permissions, const Box &box, bool isOn)
{
    const quint32 old = digit(permissions, box.key);
    const quint32 changed = isOn ? old | box.bit : old & ~box.bit;
    permissions.insert(box.key, static_cast<qlonglong>(changed & storedBits));
    return permissions;
}

QNBPermissions::Boxes QNBPermissions::boxesForPermissions(const QVariantMap &permissions)
{
    Boxes boxes{};
    auto box = boxes.begin();
    for (const QString &key : QNBHierarchyItem::permissionKeys) {
        for (const quint32 bit : bits)
            *box++ = (digit(permissions, key) & bit) != 0;
    }
    return boxes;
}

QVariantMap QNBPermissions::permissionsForBoxes(const Boxes &boxes)
{
    QVariantMap permissions;
    auto box = boxes.cbegin();
    for (const QString &key : QNBHierarchyItem::permissionKeys) {
        qlonglong sum = 0;
        for (const quint32 bit : bits)
            sum += *box++ ? bit : 0;
        permissions.insert(key, sum);
    }
    return permissions;
}

QNBHierarchyItem::Children QNBPermissions::itemsToApplyTo(const QNBHierarchyItemPtr &item)
{
    QNBHierarchyItem::Children order;
    QNBHierarchyItem::Children work{item};
    while (!work.empty()) {
        const QNBHierarchyItemPtr node = std::move(work.back());
        work.pop_back();
        for (const QNBHierarchyItemPtr &child : node->children()) {
            if (child->isDirectory())
                work.push_back(child);
            else
                order.push_back(child);
        }
        order.push_back(node);
    }
    return order;
}
