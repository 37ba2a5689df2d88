// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboText.h"

#include <QCoreApplication>
#include <QKeySequence>

QString keyComboText(const KeyCombo &combo)
{
    if (combo.isEmpty())
        return {};
    if (const std::optional<QKeyCombination> keys = KeyCodes::toQt(combo))
        return QKeySequence(*keys).toString(QKeySequence::NativeText);
    return QCoreApplication::translate("KeyComboText", "Key %1").arg(combo.code);
}
