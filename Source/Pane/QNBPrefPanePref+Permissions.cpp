// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Shared/Source/QNBShared.h"
#include "Source/Editing/QNBAttributeCommands.h"
#include "Source/Pane/QNBInterfaceProperties.h"

#include <QCheckBox>
#include <QPushButton>
#include <algorithm>

namespace {

/// The third state of a checkbox counts as off.
bool isOn(const QCheckBox &checkbox)
{
    return QNBBoolForButtonState(QNBButtonStateForCheckState(checkbox.checkState()));
}

} // namespace

QNBPrefPanePref::PermissionCheckboxes QNBPrefPanePref::permissionCheckboxes() const
{
    return {_ui_permOwnerR, _ui_permOwnerW,  _ui_permOwnerX,  _ui_permGroupR, _ui_permGroupW,
            _ui_permGroupX, _ui_permOthersR, _ui_permOthersW, _ui_permOthersX};
}

void QNBPrefPanePref::setUpPermissions()
{
    for (const QCheckBox *checkbox : permissionCheckboxes())
        connect(checkbox, &QCheckBox::clicked, this,
                [this, checkbox] { permissionsCheckboxClicked(*checkbox); });
    connect(_ui_applyPermissionsRecursively, &QPushButton::clicked, this,
            &QNBPrefPanePref::applyPermissionsRecursively);
}

void QNBPrefPanePref::permissionsCheckboxClicked(const QCheckBox &sender)
{
    const auto box = QNBPermissions::boxForTag(sender.property(QNBInterfaceProperty::tag).toInt());
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (!box || !item)
        return;
    const QVariantMap permissions = item->customPermissions();
    const QVariantMap changed = QNBPermissions::afterClick(permissions, *box, isOn(sender));
    if (changed != permissions)
        _history.push(
            new QNBSetPermissionsCommand(*this, _selectedItem, item, {item}, changed, tr("Permissions")));
    updateAttributeActions();
}

void QNBPrefPanePref::updatePermissionCheckboxes()
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    const QNBPermissions::Boxes boxes =
        QNBPermissions::boxesForPermissions(item ? item->customPermissions() : QVariantMap());
    const PermissionCheckboxes checkboxes = permissionCheckboxes();
    for (std::size_t i = 0; i < boxes.size(); ++i)
        checkboxes[i]->setCheckState(QNBCheckStateForButtonState(QNBButtonStateForBool(boxes[i])));
}

void QNBPrefPanePref::applyPermissionsRecursively()
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (!item)
        return;
    QNBPermissions::Boxes boxes{};
    const PermissionCheckboxes checkboxes = permissionCheckboxes();
    std::transform(checkboxes.begin(), checkboxes.end(), boxes.begin(),
                   [](const QCheckBox *checkbox) { return isOn(*checkbox); });
    const QVariantMap permissions = QNBPermissions::permissionsForBoxes(boxes);

    const QNBHierarchyItem::Children items = QNBPermissions::itemsToApplyTo(item);
    const bool isChange = std::any_of(items.begin(), items.end(), [&](const QNBHierarchyItemPtr &each) {
        return each->customPermissions() != permissions;
    });
    if (isChange)
        _history.push(new QNBSetPermissionsCommand(*this, _selectedItem, item, items, permissions,
                                                   tr("Apply Permissions")));
    cancelTracking();
    updateAttributeActions();
}
