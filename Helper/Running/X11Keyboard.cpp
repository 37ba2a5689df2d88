// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/X11Keyboard.h"

#include "Helper/Running/XConnection.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <xcb/xcb_keysyms.h>

namespace {

// Symbols of the X Window System Protocol, appendix A. Those of Latin-1 are its characters.
constexpr xcb_keysym_t symbolNumLock = 0xff7f;
constexpr xcb_keysym_t symbolAltLeft = 0xffe9;
constexpr xcb_keysym_t symbolSuperLeft = 0xffeb;
constexpr xcb_keysym_t symbolF1 = 0xffbe;
constexpr xcb_keysym_t symbolKeypad0 = 0xffb0;

struct SymbolEntry
{
    Qt::Key key;
    xcb_keysym_t symbol;
};

constexpr std::array specialSymbols = std::to_array<SymbolEntry>({
    {Qt::Key_Backspace, 0xff08},
    {Qt::Key_Tab, 0xff09},
    {Qt::Key_Clear, 0xff0b},
    {Qt::Key_Return, 0xff0d},
    {Qt::Key_Escape, 0xff1b},
    {Qt::Key_Home, 0xff50},
    {Qt::Key_Left, 0xff51},
    {Qt::Key_Up, 0xff52},
    {Qt::Key_Right, 0xff53},
    {Qt::Key_Down, 0xff54},
    {Qt::Key_PageUp, 0xff55},
    {Qt::Key_PageDown, 0xff56},
    {Qt::Key_End, 0xff57},
    {Qt::Key_Help, 0xff6a},
    {Qt::Key_Delete, 0xffff},
});

constexpr std::array keypadSymbols = std::to_array<SymbolEntry>({
    {Qt::Key_Enter, 0xff8d},
    {Qt::Key_Asterisk, 0xffaa},
    {Qt::Key_Plus, 0xffab},
    {Qt::Key_Minus, 0xffad},
    {Qt::Key_Period, 0xffae},
    {Qt::Key_Slash, 0xffaf},
    {Qt::Key_Equal, 0xffbd},
    {Qt::Key_Clear, 0xff0b},
});

template <typename Table>
xcb_keysym_t symbolIn(const Table &table, Qt::Key key)
{
    const auto entry = std::find_if(table.begin(), table.end(),
                                    [key](const SymbolEntry &candidate) { return candidate.key == key; });
    return entry == table.end() ? xcb_keysym_t(XCB_NO_SYMBOL) : entry->symbol;
}

xcb_keysym_t symbolOf(QKeyCombination keys)
{
    const Qt::Key key = keys.key();
    if (keys.keyboardModifiers().testFlag(Qt::KeypadModifier)) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9)
            return symbolKeypad0 + xcb_keysym_t(key - Qt::Key_0);
        return symbolIn(keypadSymbols, key);
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return symbolF1 + xcb_keysym_t(key - Qt::Key_F1);
    // Letters are upper case there, and on a keyboard without a modifier lower case.
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return xcb_keysym_t('a' + (key - Qt::Key_A));
    if (key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde)
        return xcb_keysym_t(key);
    return symbolIn(specialSymbols, key);
}

/// The columns of a key's symbols that need no modifier, in two layouts; on the keypad the digits stand in
/// the column of the number lock.
constexpr int firstLayout = 0;
constexpr int firstLayoutShifted = 1;
constexpr int secondLayout = 2;

} // namespace

class X11Keyboard::Symbols
{
public:
    Symbols()
        : keys_(xcb_key_symbols_alloc(XConnection::get()), &xcb_key_symbols_free)
        , modifiers_(xcb_get_modifier_mapping_reply(XConnection::get(),
                                                    xcb_get_modifier_mapping(XConnection::get()), nullptr),
                     &std::free)
    {
    }

    QList<xcb_keycode_t> codesOf(xcb_keysym_t symbol) const
    {
        const std::unique_ptr<xcb_keycode_t, decltype(&std::free)> codes(
            xcb_key_symbols_get_keycode(keys_.get(), symbol), &std::free);
        QList<xcb_keycode_t> result;
        for (const xcb_keycode_t *code = codes.get(); code && *code != XCB_NO_SYMBOL; ++code)
            result.append(*code);
        return result;
    }
    xcb_keysym_t symbolOf(xcb_keycode_t code, int column) const
    {
        return xcb_key_symbols_get_keysym(keys_.get(), code, column);
    }
    /// 0 if the key is no modifier.
    quint16 maskOf(xcb_keycode_t code) const
    {
        if (!modifiers_)
            return 0;
        const xcb_keycode_t *codes = xcb_get_modifier_mapping_keycodes(modifiers_.get());
        const int perModifier = modifiers_->keycodes_per_modifier;
        const int length = xcb_get_modifier_mapping_keycodes_length(modifiers_.get());
        const auto *found = std::find(codes, codes + length, code);
        return found == codes + length ? quint16(0) : quint16(1U << ((found - codes) / perModifier));
    }

private:
    std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)> keys_;
    std::unique_ptr<xcb_get_modifier_mapping_reply_t, decltype(&std::free)> modifiers_;
};

X11Keyboard::X11Keyboard()
    : symbols_(std::make_unique<Symbols>())
{
}

X11Keyboard::~X11Keyboard() = default;

QList<xcb_keycode_t> X11Keyboard::keyCodes(QKeyCombination key) const
{
    const xcb_keysym_t symbol = symbolOf(key);
    QList<xcb_keycode_t> result;
    if (symbol == XCB_NO_SYMBOL)
        return result;
    const bool onKeypad = key.keyboardModifiers().testFlag(Qt::KeypadModifier);
    for (const xcb_keycode_t code : symbols_->codesOf(symbol)) {
        if (symbols_->symbolOf(code, firstLayout) == symbol ||
            symbols_->symbolOf(code, secondLayout) == symbol ||
            (onKeypad && symbols_->symbolOf(code, firstLayoutShifted) == symbol))
            result.append(code);
    }
    return result;
}

quint16 X11Keyboard::modifierMask(Qt::KeyboardModifiers modifiers) const
{
    quint16 mask = 0;
    if (modifiers.testFlag(Qt::ShiftModifier))
        mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers.testFlag(Qt::ControlModifier))
        mask |= XCB_MOD_MASK_CONTROL;
    if (modifiers.testFlag(Qt::AltModifier))
        mask |= maskOf(symbolAltLeft, XCB_MOD_MASK_1);
    if (modifiers.testFlag(Qt::MetaModifier))
        mask |= maskOf(symbolSuperLeft, XCB_MOD_MASK_4);
    return mask;
}

QList<quint16> X11Keyboard::lockMasks() const
{
    const quint16 capsLock = XCB_MOD_MASK_LOCK;
    const quint16 numLock = maskOf(symbolNumLock, XCB_MOD_MASK_2);
    return {0, capsLock, numLock, quint16(capsLock | numLock)};
}

quint16 X11Keyboard::maskOf(xcb_keysym_t symbol, quint16 usual) const
{
    for (const xcb_keycode_t code : symbols_->codesOf(symbol)) {
        if (const quint16 mask = symbols_->maskOf(code))
            return mask;
    }
    return usual;
}
