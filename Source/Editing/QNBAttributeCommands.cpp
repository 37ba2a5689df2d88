// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBAttributeCommands.h"

QNBSetItemTextCommand::QNBSetItemTextCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset,
                                             QNBHierarchyItemPtr item, const Attribute &attribute,
                                             const QString &value, const QString &text)
    : QNBEditCommand(observer, std::move(preset), text)
    , item_(std::move(item))
    , attribute_(attribute)
    , oldValue_((item_.get()->*attribute.get)())
    , newValue_(value)
{
}

void QNBSetItemTextCommand::set(const QString &value) const
{
    (item_.get()->*attribute_.set)(value);
    observer().itemsDidChange({item_});
}

QNBSetPermissionsCommand::QNBSetPermissionsCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset,
                                                   QNBHierarchyItemPtr chosen,
                                                   QNBHierarchyItem::Children items, QVariantMap permissions,
                                                   const QString &text)
    : QNBEditCommand(observer, std::move(preset), text)
    , chosen_(std::move(chosen))
    , items_(std::move(items))
    , newPermissions_(std::move(permissions))
{
    for (const QNBHierarchyItemPtr &item : items_) {
        const QVariantMap old = item->customPermissions();
        if (oldPermissions_.empty() || oldPermissions_.back().second != old)
            oldPermissions_.emplace_back(0, old);
        ++oldPermissions_.back().first;
    }
}

void QNBSetPermissionsCommand::apply()
{
    for (const QNBHierarchyItemPtr &item : items_)
        item->setCustomPermissions(newPermissions_);
}

void QNBSetPermissionsCommand::revert()
{
    auto item = items_.cbegin();
    for (const auto &[count, permissions] : oldPermissions_) {
        for (std::size_t i = 0; i < count; ++i)
            (*item++)->setCustomPermissions(permissions);
    }
}
