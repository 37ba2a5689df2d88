// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include <QCheckBox>

QNBPrefPanePref::PermissionCheckboxes QNBPrefPanePref::permissionCheckboxes() const
{
    return {_ui_permOwnerR, _ui_permOwnerW,  _ui_permOwnerX,  _ui_permGroupR, _ui_permGroupW,
            _ui_permGroupX, _ui_permOthersR, _ui_permOthersW, _ui_permOthersX};
}

void QNBPrefPanePref::updatePermissionCheckboxes()
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    const QNBPermissions::Boxes boxes =
        QNBPermissions::boxesForPermissions(item ? item->customPermissions() : QVariantMap());
    const PermissionCheckboxes checkboxes = permissionCheckboxes();
    for (std::size_t i = 0; i < boxes.size(); ++i)
        checkboxes[i]->setCheckState(boxes[i] ? Qt::Checked : Qt::Unchecked);
}
