// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Controls/QNBShortcutWidgets.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>

void QNBPrefPanePref::setUpHierarchyActions()
{
    connect(_addFileButton, &QPushButton::clicked, this, &QNBPrefPanePref::addFileToPresetHierarchy);
    connect(_addFolderButton, &QPushButton::clicked, this, &QNBPrefPanePref::addDirectoryToPresetHierarchy);
    connect(_addFileAction, &QAction::triggered, this, &QNBPrefPanePref::addFileToPresetHierarchy);
    connect(_addFolderAction, &QAction::triggered, this, &QNBPrefPanePref::addDirectoryToPresetHierarchy);
    connect(_renameItemAction, &QAction::triggered, this,
            &QNBPrefPanePref::renameSelectedItemInPresetHierarchy);
    connect(_deleteItemAction, &QAction::triggered, this,
            &QNBPrefPanePref::deleteSelectedItemInPresetHierarchy);
    const auto connectStep = [this](QAction *action, QNBItemStep step) {
        connect(action, &QAction::triggered, this, [this, step] { moveSelectedItemInPresetHierarchy(step); });
    };
    connectStep(_moveItemUpAction, QNBItemStep::Up);
    connectStep(_moveItemDownAction, QNBItemStep::Down);
    connectStep(_moveItemIntoFolderAction, QNBItemStep::IntoFolderAbove);
    connectStep(_moveItemOutOfFolderAction, QNBItemStep::OutOfFolder);

    const QList<QWidget *> everywhere = QNBShortcutWidgets::withoutText(*_presetsTab);
    QNBShortcutWidgets::set(*_addFileAction, everywhere);
    QNBShortcutWidgets::set(*_addFolderAction, everywhere);
    const QList<QWidget *> buttons{_addFileButton, _addFolderButton, _itemActionsButton};
    const QList<QWidget *> besidesItems = buttons + QList<QWidget *>{_ui_presetHierarchyView};
    for (QAction *action : {_renameItemAction, _moveItemUpAction, _moveItemDownAction,
                            _moveItemIntoFolderAction, _moveItemOutOfFolderAction})
        QNBShortcutWidgets::set(*action, besidesItems);
    // The outline asks for deletion by itself.
    QNBShortcutWidgets::set(*_deleteItemAction, buttons);
    _ui_presetHierarchyView->installEventFilter(this);

    _itemActionsButton->setMenu(_itemActionsMenu);
    connect(_itemActionsMenu, &QMenu::aboutToShow, this, [this] { validateMenu(*_itemActionsMenu); });
}

void QNBPrefPanePref::validateHierarchyActions()
{
    const bool canInsert = canInsertItem();
    for (QPushButton *button : {_addFileButton, _addFolderButton})
        button->setEnabled(canInsert);
    for (QAction *action : {_addFileAction, _addFolderAction})
        action->setEnabled(canInsert);
    for (QAction *action : {_renameItemAction, _deleteItemAction})
        action->setEnabled(validateMenuItem(*action));
    _moveItemUpAction->setEnabled(canMoveSelectedItem(QNBItemStep::Up));
    _moveItemDownAction->setEnabled(canMoveSelectedItem(QNBItemStep::Down));
    _moveItemIntoFolderAction->setEnabled(canMoveSelectedItem(QNBItemStep::IntoFolderAbove));
    _moveItemOutOfFolderAction->setEnabled(canMoveSelectedItem(QNBItemStep::OutOfFolder));
}
