// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Keyboard/KeyboardLayout.h"

#include "Keyboard/WaylandKeymap.h"
#include "Platform/Desktop/KeyCodes.h"

#include <QGuiApplication>

#include <cstdlib>
#include <utility>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace {

const QString standInName = QStringLiteral("us");
/// How the library calls its windows there: this, or with the kind of graphics after it.
const QString waylandPlatform = QStringLiteral("wayland");

std::shared_ptr<xkb_context> newContext()
{
    return {xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref};
}

std::shared_ptr<xkb_keymap> owned(xkb_keymap *keymap)
{
    return {keymap, &xkb_keymap_unref};
}

std::shared_ptr<xkb_state> owned(xkb_state *state)
{
    return {state, &xkb_state_unref};
}

/// A keymap, and which of its layouts is switched on.
struct Present
{
    std::shared_ptr<xkb_keymap> keymap;
    quint32 active = 0;
};

/// Without a keymap where the windows are on no X screen.
Present onXScreen()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Windows that nobody sees have the interface, but no connection.
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    const std::shared_ptr<xkb_context> context = newContext();
    if (!connection || !context)
        return {};
    const qint32 keyboard = xkb_x11_get_core_keyboard_device_id(connection);
    Present present{owned(
        xkb_x11_keymap_new_from_device(context.get(), connection, keyboard, XKB_KEYMAP_COMPILE_NO_FLAGS))};
    if (!present.keymap)
        return {};
    if (const auto state = owned(xkb_x11_state_new_from_device(present.keymap.get(), connection, keyboard)))
        present.active = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    return present;
}

} // namespace

KeyboardLayout::KeyboardLayout(std::shared_ptr<xkb_keymap> keymap, quint32 layout)
    : keymap_(std::move(keymap))
    , layout_(layout)
{
}

KeyboardLayout KeyboardLayout::active()
{
    if (const Present present = onXScreen(); present.keymap)
        return {present.keymap, present.active};
    if (QGuiApplication::platformName().startsWith(waylandPlatform)) {
        if (KeyboardLayout layout = ofKeymap(WaylandKeymap::text()); layout.keymap_)
            return layout;
    }
    return named(standInName);
}

KeyboardLayout KeyboardLayout::first()
{
    KeyboardLayout layout = active();
    layout.layout_ = 0;
    return layout;
}

KeyboardLayout KeyboardLayout::named(const QString &name)
{
    const QByteArray layout = name.toLatin1();
    const xkb_rule_names names{
        .rules = "evdev", .model = "pc105", .layout = layout.constData(), .variant = "", .options = ""};
    const std::shared_ptr<xkb_context> context = newContext();
    return {context ? owned(xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS))
                    : nullptr,
            0};
}

KeyboardLayout KeyboardLayout::ofKeymap(const QByteArray &text)
{
    const std::shared_ptr<xkb_context> context = newContext();
    return {context
                ? owned(xkb_keymap_new_from_buffer(context.get(), text.constData(), size_t(text.size()),
                                                   XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS))
                : nullptr,
            0};
}

QByteArray KeyboardLayout::keymapText() const
{
    const std::unique_ptr<char, decltype(&std::free)> text(
        keymap_ ? xkb_keymap_get_as_string(keymap_.get(), XKB_KEYMAP_FORMAT_TEXT_V1) : nullptr, &std::free);
    return text.get();
}

quint32 KeyboardLayout::symbol(quint32 scanCode, With with) const
{
    if (!keymap_)
        return XKB_KEY_NoSymbol;
    const auto maskOf = [this](const char *modifier) {
        const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap_.get(), modifier);
        return index == XKB_MOD_INVALID ? 0 : 1U << index;
    };
    xkb_mod_mask_t modifiers = 0;
    if (with != With::Nothing)
        modifiers = maskOf(with == With::Shift ? XKB_MOD_NAME_SHIFT : XKB_MOD_NAME_NUM);
    const std::shared_ptr<xkb_state> state = owned(xkb_state_new(keymap_.get()));
    xkb_state_update_mask(state.get(), modifiers, 0, 0, 0, 0, layout_);
    return xkb_state_key_get_one_sym(state.get(), scanCode + KeyCodes::scanCodeOffset);
}
