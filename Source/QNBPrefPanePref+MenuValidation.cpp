// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include "Source/QNBInterfaceProperties.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QMenu>

namespace {

const QString deleteSelectedItemAction = QStringLiteral("deleteSelectedItemInPresetHierarchy");
const QString renameSelectedItemAction = QStringLiteral("renameSelectedItemInPresetHierarchy");
const QString dummyAction = QStringLiteral("dummyAction");
const QString openFileContentFolderAction = QStringLiteral("openFileContentFolder");
const QString fileContentItemClickedAction = QStringLiteral("fileContentItemClicked");

/// Tags of items that only hold something: a submenu for files, views for any item.
constexpr int fileOnlyTag = 1000;
constexpr int anyItemTag = 1100;

} // namespace

bool QNBPrefPanePref::validateMenuItem(const QObject &menuItem) const
{
    const QNBHierarchyItemPtr selection = selectedHierarchyItem();
    const bool isFile = selection && !selection->isDirectory();
    const QString action = menuItem.property(QNBInterfaceProperty::action).toString();
    const int tag = menuItem.property(QNBInterfaceProperty::tag).toInt();

    if (action == deleteSelectedItemAction || action == renameSelectedItemAction)
        return selection != nullptr;
    if (action == dummyAction && tag == fileOnlyTag)
        return isFile;
    if (action == dummyAction && tag == anyItemTag)
        return selection != nullptr;
    if (action == openFileContentFolderAction || action == fileContentItemClickedAction)
        return isFile;
    return true;
}

void QNBPrefPanePref::validateMenu(const QMenu &menu)
{
    const QList<QAction *> items = menu.actions();
    for (QAction *item : items) {
        // What a submenu's entry does is written on the submenu.
        const QObject *described = item->menu() ? static_cast<const QObject *>(item->menu()) : item;
        if (described->property(QNBInterfaceProperty::action).isValid())
            item->setEnabled(validateMenuItem(*described));
    }
    validateHierarchyActions();
}
