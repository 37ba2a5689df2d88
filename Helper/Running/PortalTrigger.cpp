// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PortalTrigger.h"

#include "Keyboard/LayoutKeys.h"

#include <QHash>
#include <QKeySequence>
#include <QRegularExpression>
#include <QStringList>

#include <optional>

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

QString PortalTrigger::shown(const QString &description, const KeyboardLayout &layout)
{
    static const QRegularExpression form(QStringLiteral("^(?:Press )?((?:<[A-Za-z]+>)+)(\\w+)\\.?$"));
    static const QHash<QString, Qt::KeyboardModifier> modifiers = {
        {QStringLiteral("Control"), Qt::ControlModifier}, {QStringLiteral("Ctrl"), Qt::ControlModifier},
        {QStringLiteral("Primary"), Qt::ControlModifier}, {QStringLiteral("Alt"), Qt::AltModifier},
        {QStringLiteral("Shift"), Qt::ShiftModifier},     {QStringLiteral("Super"), Qt::MetaModifier},
    };
    const QRegularExpressionMatch match = form.match(description);
    if (!match.hasMatch())
        return description;
    Qt::KeyboardModifiers held;
    const QStringList names = match.captured(1).mid(1).chopped(1).split(QStringLiteral("><"));
    for (const QString &name : names) {
        const auto modifier = modifiers.constFind(name);
        if (modifier == modifiers.constEnd())
            return description;
        held |= *modifier;
    }
    for (const KeyCodes::Key &key : KeyCodes::all()) {
        if (LayoutKeys::symbolName(key.code, layout) != match.captured(2))
            continue;
        if (const auto keys = LayoutKeys::printed({KeyCodes::flagsOf(held), key.code}, layout))
            return QKeySequence(*keys).toString(QKeySequence::NativeText);
    }
    return description;
}
