// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include <QLabel>

namespace {

/// First letter of each word in upper case, the rest in lower case.
QString capitalized(const QString &name)
{
    QString result = name.toLower();
    for (qsizetype i = 0; i < result.size(); ++i) {
        if (i == 0 || result.at(i - 1).isSpace())
            result[i] = result.at(i).toUpper();
    }
    return result;
}

} // namespace

QNBHoverButton *QNBPrefPanePref::colorButton(const QString &name) const
{
    return dynamic_cast<QNBHoverButton *>(_outlets.value(QStringLiteral("_ui_%1Button").arg(name)));
}

void QNBPrefPanePref::updateColorLabelButtons()
{
    showColorName({});
    _ui_clearColorButton->setState(Qt::Unchecked);
    for (QNBHoverButton *button : std::as_const(_hoverButtons))
        button->setStateWithNumber(0);

    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (!item || item->colorName().isEmpty())
        return;
    // A preset that was written elsewhere may name a colour that is none of ours: no button is lit for it,
    // and no name is shown that no button has.
    QNBHoverButton *button = colorButton(item->colorName().toLower());
    if (!button)
        return;
    button->setState(Qt::Checked);
    showColorName(item->colorName());
}

void QNBPrefPanePref::colorLabelButtonHovered(QNBHoverCell &sender)
{
    // When the pointer leaves, the name falls back to the selected item's own colour.
    QString name = sender.title();
    if (!name.isEmpty() && !sender.isHovered()) {
        const QNBHierarchyItemPtr item = selectedHierarchyItem();
        name = item ? item->colorName() : QString();
    }
    showColorName(name);
}

void QNBPrefPanePref::showColorName(const QString &name)
{
    _ui_hoveredColor->setText(name.isEmpty() ? QString() : QStringLiteral("“%1”").arg(capitalized(name)));
}
