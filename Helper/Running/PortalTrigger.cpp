// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PortalTrigger.h"

#include "Keyboard/LayoutKeys.h"

#include <QStringList>

QString PortalTrigger::forCombo(const KeyCombo &combo, const KeyboardLayout &layout)
{
    const QString name = LayoutKeys::symbolName(LayoutKeys::byPlace(combo, layout).code, layout);
    if (name.isEmpty())
        return {};
    QStringList parts;
    const Qt::KeyboardModifiers modifiers = KeyCodes::modifiersOf(combo.flags);
    if (modifiers.testFlag(Qt::ControlModifier))
        parts.append(QStringLiteral("CTRL"));
    if (modifiers.testFlag(Qt::AltModifier))
        parts.append(QStringLiteral("ALT"));
    if (modifiers.testFlag(Qt::ShiftModifier))
        parts.append(QStringLiteral("SHIFT"));
    if (modifiers.testFlag(Qt::MetaModifier))
        parts.append(QStringLiteral("LOGO"));
    parts.append(name);
    return parts.join(u'+');
}
