// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Pane/QNBInterfaceProperties.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QMenu>
#include <QWidgetAction>

namespace {

const QString deleteSelectedItemAction = QStringLiteral("deleteSelectedItemInPresetHierarchy");
const QString renameSelectedItemAction = QStringLiteral("renameSelectedItemInPresetHierarchy");
const QString openFileContentFolderAction = QStringLiteral("openFileContentFolder");
const QString fileContentItemClickedAction = QStringLiteral("fileContentItemClicked");

/// What an entry does is written on the submenu or the view, if it holds one.
const QObject &describedObject(const QAction &item)
{
    if (item.menu())
        return *item.menu();
    const auto *holder = dynamic_cast<const QWidgetAction *>(&item);
    return holder && holder->defaultWidget() ? *holder->defaultWidget() : static_cast<const QObject &>(item);
}

} // namespace

bool QNBPrefPanePref::validateMenuItem(const QObject &menuItem) const
{
    const QNBHierarchyItemPtr selection = selectedHierarchyItem();
    const bool isFile = selection && !selection->isDirectory();
    const QString action = menuItem.property(QNBInterfaceProperty::action).toString();
    const int tag = menuItem.property(QNBInterfaceProperty::tag).toInt();

    if (action == deleteSelectedItemAction || action == renameSelectedItemAction)
        return selection != nullptr;
    if (action == QNBInterfaceProperty::dummyAction && tag == QNBInterfaceProperty::fileOnlyTag)
        return isFile;
    if (action == QNBInterfaceProperty::dummyAction && tag == QNBInterfaceProperty::anyItemTag)
        return selection != nullptr;
    if (action == openFileContentFolderAction || action == fileContentItemClickedAction)
        return isFile;
    return true;
}

void QNBPrefPanePref::validateMenu(const QMenu &menu)
{
    const QList<QAction *> items = menu.actions();
    for (QAction *item : items) {
        const QObject &described = describedObject(*item);
        if (described.property(QNBInterfaceProperty::action).isValid())
            item->setEnabled(validateMenuItem(described));
    }
    validateHierarchyActions();
}
