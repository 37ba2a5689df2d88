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

void QNBPrefPanePref::colorLabelButtonHovered(QNBHoverButton &sender)
{
    // When the pointer leaves, the name falls back to the selected item's own colour.
    QString name = sender.title();
    if (!name.isEmpty() && !sender.isHovered()) {
        const QNBHierarchyItemPtr item = selectedHierarchyItem();
        name = item ? item->colorName() : QString();
    }
    _ui_hoveredColor->setText(name.isEmpty() ? QString() : QStringLiteral("“%1”").arg(capitalized(name)));
}
