// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Controls/QNBShownColorName.h"
#include "Source/Editing/QNBAttributeCommands.h"
#include "Toolkit/MenuViewAction.h"

#include <QLabel>

QNBHoverButton *QNBPrefPanePref::colorButton(const QString &name) const
{
    return dynamic_cast<QNBHoverButton *>(_outlets.value(QStringLiteral("_ui_%1Button").arg(name)));
}

void QNBPrefPanePref::colorLabelButtonClicked(const QNBHoverButton &sender)
{
    const QString title = sender.title();
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    // The command has the item's row shown anew. A label that is there already is no step to take back.
    if (item && item->colorName() != title)
        _history.push(new QNBSetItemTextCommand(*this, _selectedItem, item, QNBSetItemTextCommand::colorName,
                                                title, tr("Label")));
    updateColorLabelButtons();
    cancelTracking();
    updateAttributeActions();
}

void QNBPrefPanePref::updateColorLabelButtons()
{
    _ui_hoveredColor->setText({});
    _ui_clearColorButton->setState(Qt::Unchecked);
    for (QNBHoverButton *button : std::as_const(_hoverButtons))
        button->setStateWithNumber(0);
    _colorRow->setAccessibleDescription(_ui_clearColorButton->accessibleName());
    _colorRowAction->setEntrance(*_ui_clearColorButton);

    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (!item || item->colorName().isEmpty())
        return;
    // A preset that was written elsewhere may name a colour that is none of ours: no button is lit for it,
    // and its name is not shown.
    QNBHoverButton *button = colorButton(item->colorName().toLower());
    if (!button)
        return;
    button->setState(Qt::Checked);
    _ui_hoveredColor->setText(shownColorName(item->colorName()));
    _colorRow->setAccessibleDescription(button->accessibleName());
    _colorRowAction->setEntrance(*button);
}

void QNBPrefPanePref::colorLabelButtonHovered(QNBHoverCell &sender)
{
    const bool isNamed = sender.isHovered() || sender.title().isEmpty();
    _ui_hoveredColor->setText(shownColorName(isNamed ? sender.title() : nameOfColorNotHovered()));
}

/// Of the button that has the keyboard, else of the selected item, if that is one of our colours.
QString QNBPrefPanePref::nameOfColorNotHovered() const
{
    for (const QNBHoverButton *button : _hoverButtons) {
        if (button->isFocusedByKeyboard())
            return button->title();
    }
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    return item && colorButton(item->colorName().toLower()) ? item->colorName() : QString();
}
