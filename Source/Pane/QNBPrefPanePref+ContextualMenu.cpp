// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Controls/QNBShownColorName.h"
#include "Toolkit/DarkGround.h"
#include "Toolkit/MenuViewAction.h"
#include "Toolkit/ScrollingMenu.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <algorithm>

namespace {

/// An open menu does not grow with the name that it shows.
void makeRoomForNames(QLabel &label, const QList<QNBHoverButton *> &buttons)
{
    int width = 0;
    for (const QNBHoverButton *button : buttons)
        width = std::max(
            width, label.fontMetrics().size(Qt::TextSingleLine, shownColorName(button->title())).width());
    label.setMinimumWidth(width);
}

} // namespace

void QNBPrefPanePref::makeContextualMenu()
{
    const auto addView = [this](QWidget *view, const MenuViewAction::Rows &rows) {
        auto *action = new MenuViewAction(view, rows, _ui_presetContextualMenu);
        connect(action, &MenuViewAction::triggered, this, &QNBPrefPanePref::dummyAction);
        _ui_presetContextualMenu->addSeparator();
        _ui_presetContextualMenu->addAction(action);
        return action;
    };
    _colorRowAction =
        addView(_colorRow, {{_ui_clearColorButton, _ui_redButton, _ui_orangeButton, _ui_yellowButton,
                             _ui_greenButton, _ui_blueButton, _ui_purpleButton, _ui_grayButton}});
    MenuViewAction *permissions =
        addView(_permissionsGrid, {{_ui_permOwnerR, _ui_permOwnerW, _ui_permOwnerX},
                                   {_ui_permGroupR, _ui_permGroupW, _ui_permGroupX},
                                   {_ui_permOthersR, _ui_permOthersW, _ui_permOthersX},
                                   {_ui_applyPermissionsRecursively}});
    permissions->addTabStop(*_ui_applyPermissionsRecursively);
    _permissionsGrid->setBackgroundRole(QPalette::Window);
    connect(_ui_presetContextualMenu, &QMenu::aboutToShow, this, [this] {
        // Styles draw boxes for the ground of a window: on that of a dark menu an unchecked one can't be
        // seen.
        _permissionsGrid->setAutoFillBackground(
            isDarkGround(_ui_presetContextualMenu->palette().color(QPalette::Base)));
        makeRoomForNames(*_ui_hoveredColor, _hoverButtons);
        validateMenu(*_ui_presetContextualMenu);
    });
    ScrollingMenu::makeOf(*_ui_presetContextualMenu);
    ScrollingMenu::makeOf(*_itemActionsMenu);
    ScrollingMenu::makeOf(*_presetActionsMenu);
    _ui_presetHierarchyView->setMenu(_ui_presetContextualMenu);
}

void QNBPrefPanePref::showLabelAndPermissions()
{
    if (!selectedHierarchyItem())
        return;
    _ui_presetHierarchyView->askForMenuByKey();
    _colorRowAction->enter();
}

void QNBPrefPanePref::cancelTracking()
{
    if (!_ui_presetContextualMenu->isVisible())
        return;
    // Whatever menu hangs in this one, or this one in, goes too.
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    while (menu && menu->close())
        menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
}
