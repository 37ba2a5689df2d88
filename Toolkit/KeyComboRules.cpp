// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboRules.h"

#include <QCoreApplication>
#include <QKeySequence>

#include <algorithm>
#include <array>

namespace {

constexpr std::array modifierKeys = {
    Qt::Key_Shift,   Qt::Key_Control,    Qt::Key_Meta,        Qt::Key_Alt,      Qt::Key_AltGr,
    Qt::Key_Super_L, Qt::Key_Super_R,    Qt::Key_Hyper_L,     Qt::Key_Hyper_R,  Qt::Key_CapsLock,
    Qt::Key_NumLock, Qt::Key_ScrollLock, Qt::Key_Mode_switch, Qt::Key_Multi_key};

struct Meaning
{
    QKeySequence::StandardKey command;
    const char *words;
};

constexpr std::array meanings = std::to_array<Meaning>({
    {QKeySequence::New, QT_TRANSLATE_NOOP("KeyComboRules", "New")},
    {QKeySequence::Open, QT_TRANSLATE_NOOP("KeyComboRules", "Open")},
    {QKeySequence::Close, QT_TRANSLATE_NOOP("KeyComboRules", "Close")},
    {QKeySequence::Save, QT_TRANSLATE_NOOP("KeyComboRules", "Save")},
    {QKeySequence::SaveAs, QT_TRANSLATE_NOOP("KeyComboRules", "Save As")},
    {QKeySequence::Print, QT_TRANSLATE_NOOP("KeyComboRules", "Print")},
    {QKeySequence::Quit, QT_TRANSLATE_NOOP("KeyComboRules", "Quit")},
    {QKeySequence::Undo, QT_TRANSLATE_NOOP("KeyComboRules", "Undo")},
    {QKeySequence::Redo, QT_TRANSLATE_NOOP("KeyComboRules", "Redo")},
    {QKeySequence::Cut, QT_TRANSLATE_NOOP("KeyComboRules", "Cut")},
    {QKeySequence::Copy, QT_TRANSLATE_NOOP("KeyComboRules", "Copy")},
    {QKeySequence::Paste, QT_TRANSLATE_NOOP("KeyComboRules", "Paste")},
    {QKeySequence::SelectAll, QT_TRANSLATE_NOOP("KeyComboRules", "Select All")},
    {QKeySequence::Find, QT_TRANSLATE_NOOP("KeyComboRules", "Find")},
    {QKeySequence::Replace, QT_TRANSLATE_NOOP("KeyComboRules", "Replace")},
    {QKeySequence::AddTab, QT_TRANSLATE_NOOP("KeyComboRules", "New Tab")},
});

bool isWithoutModifier(const KeyCombo &combo)
{
    constexpr quint64 counting = KeyCodes::controlFlag | KeyCodes::optionFlag | KeyCodes::commandFlag;
    return (combo.flags & counting) == 0;
}

} // namespace

bool KeyComboRules::isModifier(Qt::Key key)
{
    return std::find(modifierKeys.begin(), modifierKeys.end(), key) != modifierKeys.end();
}

bool KeyComboRules::needsModifier(const KeyCombo &combo)
{
    using KeyCodes::Kind;
    const KeyCodes::Key *key = KeyCodes::withCode(combo.code);
    const bool isFree = key && (key->kind == Kind::Function || key->kind == Kind::Media);
    return isWithoutModifier(combo) && !isFree;
}

QString KeyComboRules::usualMeaning(const KeyCombo &combo, QKeyCombination keys)
{
    // Function keys mean something only here and there.
    if (isWithoutModifier(combo))
        return {};
    QList<QKeySequence> pressed = {
        QKeyCombination(keys.keyboardModifiers() & ~Qt::KeypadModifier, keys.key())};
    // Where the layout gives no Latin letters, programs take the letter of a US keyboard.
    const KeyCodes::Key *key = KeyCodes::withCode(combo.code);
    constexpr int lastOfLatin1 = 0xff;
    if (key && key->kind == KeyCodes::Kind::Typing && keys.key() > lastOfLatin1)
        pressed.append(QKeyCombination(KeyCodes::modifiersOf(combo.flags), key->key));
    const auto meaning = std::find_if(meanings.begin(), meanings.end(), [&pressed](const Meaning &candidate) {
        const QList<QKeySequence> bindings = QKeySequence::keyBindings(candidate.command);
        return std::any_of(pressed.cbegin(), pressed.cend(),
                           [&bindings](const QKeySequence &sequence) { return bindings.contains(sequence); });
    });
    return meaning == meanings.end() ? QString()
                                     : QCoreApplication::translate("KeyComboRules", meaning->words);
}
