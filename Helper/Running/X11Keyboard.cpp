// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/X11Keyboard.h"

#include "Helper/Running/XConnection.h"

#include <algorithm>
#include <cstdlib>
#include <xcb/xcb_keysyms.h>

namespace {

// Symbols of the X Window System Protocol, appendix A.
constexpr xcb_keysym_t symbolNumLock = 0xff7f;
constexpr xcb_keysym_t symbolAltLeft = 0xffe9;
constexpr xcb_keysym_t symbolSuperLeft = 0xffeb;

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
