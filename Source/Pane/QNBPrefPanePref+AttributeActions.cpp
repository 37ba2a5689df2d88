// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Controls/QNBShortcutWidgets.h"
#include "Source/Pane/QNBInterfaceProperties.h"
#include "Toolkit/PaintedIcon.h"

#include <QActionGroup>
#include <QCheckBox>
#include <QMenu>
#include <QPainter>
#include <QPushButton>

// Labels and permissions once more as plain entries of the menu of actions, each a few keys away.

namespace {

const QString labelShortcut = QStringLiteral("Ctrl+%1");

QIcon swatchIcon(const QString &colorName)
{
    const auto gel = QNBHoverCell::colorForGel(colorName);
    if (!gel)
        return {};
    return paintedIcon([gel](QPainter &painter, const QRectF &rect) {
        const qreal side = rect.width();
        const QRectF square = rect.adjusted(side / 8, side / 8, -side / 8, -side / 8);
        painter.setBrush(QNBHoverCell::gradient(*gel, square));
        painter.drawRoundedRect(square, side / 12, side / 12);
    });
}

} // namespace

void QNBPrefPanePref::setUpAttributeActions()
{
    const auto addMenu = [this](const QString &title) {
        auto *menu = new QMenu(title, _itemActionsMenu);
        menu->setProperty(QNBInterfaceProperty::action, QNBInterfaceProperty::dummyAction);
        menu->setProperty(QNBInterfaceProperty::tag, QNBInterfaceProperty::anyItemTag);
        _itemActionsMenu->insertMenu(_permissionsAction, menu);
        return menu;
    };

    QMenu *labels = addMenu(tr("La&bel"));
    auto *group = new QActionGroup(labels);
    group->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    QList<QNBHoverButton *> buttons = _hoverButtons;
    // No label first, with 0.
    buttons.prepend(buttons.takeLast());
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        const QNBHoverButton *button = buttons[i];
        QAction *action = labels->addAction(swatchIcon(button->title()), button->accessibleName());
        action->setShortcut(QKeySequence(labelShortcut.arg(i)));
        action->setData(button->title());
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, button] { colorLabelButtonClicked(*button); });
        _labelActions.append(action);
    }

    QMenu *permissions = addMenu(tr("&Permissions"));
    for (QCheckBox *checkbox : permissionCheckboxes()) {
        QAction *action = permissions->addAction(checkbox->accessibleName());
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, checkbox](bool isOn) {
            checkbox->setChecked(isOn);
            permissionsCheckboxClicked(*checkbox);
        });
        _permissionActions.append(action);
    }
    permissions->addSeparator();
    QAction *apply = permissions->addAction(_ui_applyPermissionsRecursively->text());
    connect(apply, &QAction::triggered, this, &QNBPrefPanePref::applyPermissionsRecursively);
    _permissionActions.append(apply);

    connect(_permissionsAction, &QAction::triggered, this, &QNBPrefPanePref::showLabelAndPermissions);
    const QList<QWidget *> everywhere = QNBShortcutWidgets::withoutText(*_presetsTab);
    const QList<QAction *> withShortcuts = _labelActions + QList<QAction *>{_permissionsAction};
    for (QAction *action : withShortcuts)
        QNBShortcutWidgets::set(*action, everywhere);
    updateAttributeActions();
}

void QNBPrefPanePref::updateAttributeActions()
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    const QString color = item ? item->colorName().toLower() : QString();
    for (QAction *action : std::as_const(_labelActions)) {
        action->setEnabled(item != nullptr);
        action->setChecked(item && action->data().toString() == color);
    }
    const QNBPermissions::Boxes boxes =
        QNBPermissions::boxesForPermissions(item ? item->customPermissions() : QVariantMap());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        QAction *action = _permissionActions[static_cast<qsizetype>(i)];
        action->setEnabled(item != nullptr);
        action->setChecked(boxes[i]);
    }
    const bool hasInside = item && item->isDirectory();
    _ui_applyPermissionsRecursively->setEnabled(hasInside);
    _permissionActions.constLast()->setEnabled(hasInside);
    _permissionsAction->setEnabled(item != nullptr);
}
