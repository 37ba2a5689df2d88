// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct xkb_keymap;

/// What the keys of the keyboard give, by the layouts that the user has set up: the first of them, or the
/// one that is switched on now. A copy of the moment at which it was made.
class KeyboardLayout
{
public:
    /// Of the display that the program's windows are on. Waits for the display server. Where the display
    /// does not tell, that of the US.
    static KeyboardLayout active();
    /// The same display, but the first of the user's layouts, whichever is switched on. On Wayland both are.
    static KeyboardLayout first();
    /// By the name that the system has for it ("de"); without keys if it has none such.
    static KeyboardLayout named(const QString &name);
    /// The first of the keymap that \a text describes, as display servers give it to programs; without keys
    /// if it describes none.
    static KeyboardLayout ofKeymap(const QByteArray &text);
    /// Of all its layouts.
    QByteArray keymapText() const;

    enum class With { Nothing, Shift, NumLock };

    /// The symbol that the key with the scan code \a scanCode (see KeyCodes::Key) gives, in the numbering of
    /// the X Window System; 0 for none.
    quint32 symbol(quint32 scanCode, With with = With::Nothing) const;

private:
    KeyboardLayout(std::shared_ptr<xkb_keymap> keymap, quint32 layout);

    std::shared_ptr<xkb_keymap> keymap_;
    /// Which of the keymap's.
    quint32 layout_;
};
