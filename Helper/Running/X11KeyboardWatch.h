// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <functional>

/// Tells when the X screen has another keyboard, or its keyboard another layout.
class X11KeyboardWatch : private QAbstractNativeEventFilter
{
public:
    /// Does nothing where the windows are not on an X screen. \a changed is called from the event loop, once
    /// for what comes at once.
    explicit X11KeyboardWatch(std::function<void()> changed);
    ~X11KeyboardWatch();

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

    const std::function<void()> changed_;
    /// The type of the keyboard extension's events; 0 without it.
    quint8 keyboardEvent_ = 0;
    bool isTelling_ = false;
    /// What is queued is dropped with it.
    QObject context_;
};
