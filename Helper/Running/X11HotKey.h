// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QObject>

#include <xcb/xcb.h>

/// A grab of the keys on the X screen, whatever locks are on. It follows the layout of the keyboard.
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
    void grab(QKeyCombination keys) override;

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool isChangeOfLayout(const xcb_generic_event_t *event) const;
    void layoutChanged();
    /// Empty, or the reason why it could not.
    QString grabNow();
    void release();

    const Handlers handlers_;
    QKeyCombination keys_;
    QList<Grab> grabs_;
    /// The type of the keyboard extension's events; 0 without it.
    quint8 keyboardEvent_ = 0;
    bool isRegrabbing_ = false;
    /// What is queued is dropped with it.
    QObject context_;
};
