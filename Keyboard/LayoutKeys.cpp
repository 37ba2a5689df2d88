// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Keyboard/LayoutKeys.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace {

/// What the dead keys from XKB_KEY_dead_grave on are printed as, in the order of their numbers.
constexpr QStringView deadKeyPrints = u"`´^~¯˘˙¨°˝ˇ¸˛";
constexpr Qt::Key firstDeadKey = Qt::Key_Dead_Grave;
constexpr Qt::Key lastDeadKey = Qt::Key_Dead_Longsolidusoverlay;

/// In bytes; more than any has.
constexpr std::size_t longestSymbolName = 64;

/// Dead keys, which give no character yet, stand in the same order with both.
std::optional<Qt::Key> deadKey(quint32 symbol)
{
    const quint32 key = symbol - XKB_KEY_dead_grave + quint32(firstDeadKey);
    if (symbol < XKB_KEY_dead_grave || key > quint32(lastDeadKey))
        return {};
    return Qt::Key(key);
}

/// None for a symbol that is no character.
std::optional<Qt::Key> characterKey(quint32 symbol)
{
    const char32_t character = xkb_keysym_to_utf32(symbol);
    if (character == 0)
        return {};
    if (QChar::isDigit(character))
        return Qt::Key(Qt::Key_0 + QChar::digitValue(character));
    const char32_t upper = QChar::toUpper(character);
    // Two of Latin-1 have their upper case elsewhere, and their lower case for a key.
    constexpr char32_t lastOfLatin1 = 0xff;
    return Qt::Key(character <= lastOfLatin1 && upper > lastOfLatin1 ? character : upper);
}

QKeyCombination combination(const KeyCombo &combo, const KeyCodes::Key &key, Qt::Key named)
{
    Qt::KeyboardModifiers modifiers = KeyCodes::modifiersOf(combo.flags);
    modifiers.setFlag(Qt::KeypadModifier, key.kind == KeyCodes::Kind::Keypad);
    return QKeyCombination(modifiers, named);
}

} // namespace

KeyCombo LayoutKeys::byPlace(const KeyCombo &combo, const KeyboardLayout &layout)
{
    using KeyCodes::Kind;
    KeyCombo result{combo.flags, combo.code};
    const KeyCodes::Key *place = KeyCodes::withCode(combo.code);
    if (!combo.mayMeanCharacter || !place || place->kind != Kind::Typing)
        return result;
    const auto keys = KeyCodes::all();
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const KeyCodes::Key &key) {
        return key.kind == Kind::Typing && characterKey(layout.symbol(key.scanCode)) == place->key;
    });
    if (found != keys.end())
        result.code = found->code;
    return result;
}

QList<KeyCombo> LayoutKeys::places(const KeyCombo &combo, const KeyboardLayout &layout)
{
    const KeyCombo place{combo.flags, combo.code};
    const KeyCombo ofCharacter = byPlace(combo, layout);
    return place == ofCharacter ? QList{place} : QList{place, ofCharacter};
}

std::optional<QKeyCombination> LayoutKeys::printed(const KeyCombo &stored, const KeyboardLayout &layout)
{
    const KeyCombo combo = byPlace(stored, layout);
    const KeyCodes::Key *key = KeyCodes::withCode(combo.code);
    if (combo.isEmpty() || !key)
        return {};
    if (key->kind != KeyCodes::Kind::Typing)
        return combination(combo, *key, key->key);
    const quint32 symbol = layout.symbol(key->scanCode);
    const quint32 dead = symbol - XKB_KEY_dead_grave;
    if (deadKey(symbol) && dead < deadKeyPrints.size())
        return combination(combo, *key, Qt::Key(deadKeyPrints[dead].unicode()));
    const std::optional<Qt::Key> named = characterKey(symbol);
    if (!named && key->key == Qt::Key_unknown)
        return {};
    return combination(combo, *key, named.value_or(key->key));
}

std::optional<QKeyCombination> LayoutKeys::typed(const KeyCombo &stored, const KeyboardLayout &layout)
{
    const KeyCombo combo = byPlace(stored, layout);
    const KeyCodes::Key *key = KeyCodes::withCode(combo.code);
    const std::optional<QKeyCombination> onKey = printed(combo, layout);
    if (!onKey || key->kind != KeyCodes::Kind::Typing)
        return onKey;
    const auto keyOf = [](quint32 symbol) {
        const std::optional<Qt::Key> dead = deadKey(symbol);
        return dead ? dead : characterKey(symbol);
    };
    const Qt::Key plain = keyOf(layout.symbol(key->scanCode)).value_or(onKey->key());
    const Qt::Key shifted = keyOf(layout.symbol(key->scanCode, KeyboardLayout::With::Shift)).value_or(plain);
    KeyCombo rest = combo;
    if ((combo.flags & KeyCodes::shiftFlag) != 0 && !QChar::isLetter(char32_t(shifted)) && shifted != plain)
        rest.flags &= ~KeyCodes::shiftFlag;
    return combination(rest, *key, (combo.flags & KeyCodes::shiftFlag) != 0 ? shifted : plain);
}

QString LayoutKeys::symbolName(qint64 code, const KeyboardLayout &layout)
{
    using With = KeyboardLayout::With;
    const KeyCodes::Key *key = KeyCodes::withCode(code);
    if (!key)
        return {};
    const quint32 symbol =
        layout.symbol(key->scanCode, key->kind == KeyCodes::Kind::Keypad ? With::NumLock : With::Nothing);
    std::array<char, longestSymbolName> name{};
    if (symbol == XKB_KEY_NoSymbol || xkb_keysym_get_name(symbol, name.data(), name.size()) < 0)
        return {};
    return QString::fromLatin1(name.data());
}
