// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QObject>

#include <xcb/xcb.h>

/// A grab of the key on the X screen, whatever locks are on and whatever the layout makes of it.
class X11HotKey : public HotKey, private QAbstractNativeEventFilter
{
public:
    /// One key with one set of modifiers.
    struct Grab
    {
        xcb_keycode_t key = 0;
        quint16 modifiers = 0;
        friend bool operator==(const Grab &, const Grab &) = default;
    };

    /// There has to be an X screen.
    explicit X11HotKey(Handlers handlers);
    ~X11HotKey() override;

    QString name() const override;
    void grab(const KeyCombo &combo) override;
    void keyboardChanged() override;

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    /// Empty, or the reason why it could not.
    QString grabNow();
    void release();

    const Handlers handlers_;
    KeyCombo combo_;
    /// None while it is not heard.
    QList<Grab> grabs_;
    /// What is queued is dropped with it.
    QObject context_;
};
