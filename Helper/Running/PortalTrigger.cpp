// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PortalTrigger.h"

#include <QStringList>

#include <algorithm>
#include <array>

// The keys are named as X names its symbols.

namespace {

struct NameEntry
{
    int key;
    const char *name;
};

constexpr std::array names = std::to_array<NameEntry>({
    {Qt::Key_Space, "space"},
    {Qt::Key_Apostrophe, "apostrophe"},
    {Qt::Key_Comma, "comma"},
    {Qt::Key_Minus, "minus"},
    {Qt::Key_Period, "period"},
    {Qt::Key_Slash, "slash"},
    {Qt::Key_Semicolon, "semicolon"},
    {Qt::Key_Equal, "equal"},
    {Qt::Key_BracketLeft, "bracketleft"},
    {Qt::Key_Backslash, "backslash"},
    {Qt::Key_BracketRight, "bracketright"},
    {Qt::Key_QuoteLeft, "grave"},
    {Qt::Key_Backspace, "BackSpace"},
    {Qt::Key_Tab, "Tab"},
    {Qt::Key_Clear, "Clear"},
    {Qt::Key_Return, "Return"},
    {Qt::Key_Escape, "Escape"},
    {Qt::Key_Home, "Home"},
    {Qt::Key_Left, "Left"},
    {Qt::Key_Up, "Up"},
    {Qt::Key_Right, "Right"},
    {Qt::Key_Down, "Down"},
    {Qt::Key_PageUp, "Prior"},
    {Qt::Key_PageDown, "Next"},
    {Qt::Key_End, "End"},
    {Qt::Key_Help, "Help"},
    {Qt::Key_Delete, "Delete"},
});

constexpr std::array keypadNames = std::to_array<NameEntry>({
    {Qt::Key_Enter, "KP_Enter"},
    {Qt::Key_Asterisk, "KP_Multiply"},
    {Qt::Key_Plus, "KP_Add"},
    {Qt::Key_Minus, "KP_Subtract"},
    {Qt::Key_Period, "KP_Decimal"},
    {Qt::Key_Slash, "KP_Divide"},
    {Qt::Key_Equal, "KP_Equal"},
    {Qt::Key_Clear, "Clear"},
});

template <typename Table>
QString nameIn(const Table &table, int key)
{
    const auto entry = std::find_if(table.begin(), table.end(),
                                    [key](const NameEntry &candidate) { return candidate.key == key; });
    return entry == table.end() ? QString() : QString::fromLatin1(entry->name);
}

QString nameOf(QKeyCombination keys)
{
    const int key = keys.key();
    const bool onKeypad = keys.keyboardModifiers().testFlag(Qt::KeypadModifier);
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return (onKeypad ? QStringLiteral("KP_") : QString()) + QChar(key);
    if (onKeypad)
        return nameIn(keypadNames, key);
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return QChar(key).toLower();
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return u'F' + QString::number(key - Qt::Key_F1 + 1);
    return nameIn(names, key);
}

} // namespace

QString PortalTrigger::forKeys(QKeyCombination keys)
{
    const QString name = nameOf(keys);
    if (name.isEmpty())
        return {};
    QStringList parts;
    const Qt::KeyboardModifiers modifiers = keys.keyboardModifiers();
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
