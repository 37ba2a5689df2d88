// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboText.h"

#include "Keyboard/LayoutKeys.h"

#include <QCoreApplication>
#include <QKeySequence>

QString keyComboText(const KeyCombo &combo, const KeyboardLayout &layout)
{
    if (combo.isEmpty())
        return {};
    if (const std::optional<QKeyCombination> keys = LayoutKeys::printed(combo, layout))
        return QKeySequence(*keys).toString(QKeySequence::NativeText);
    return QCoreApplication::translate("KeyComboText", "Key %1").arg(combo.code);
}
