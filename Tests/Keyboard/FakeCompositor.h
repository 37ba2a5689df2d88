// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <thread>

struct wl_display;
struct wl_event_source;

/// A Wayland display with nothing but a keyboard, on a thread of its own.
class FakeCompositor
{
public:
    /// Listens in \a folder once constructed; without a keymap it has no keyboard either.
    FakeCompositor(const QString &folder, const QByteArray &keymap);
    ~FakeCompositor();
    FakeCompositor(const FakeCompositor &) = delete;
    FakeCompositor &operator=(const FakeCompositor &) = delete;

    QString socketPath() const { return socketPath_; }
    const QByteArray &keymap() const { return keymap_; }

private:
    const QString socketPath_;
    const QByteArray keymap_;
    wl_display *display_;
    /// Readable once it is to end.
    int end_;
    wl_event_source *whenToEnd_ = nullptr;
    std::thread thread_;
};
