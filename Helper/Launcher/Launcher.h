// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Launcher/LauncherWindow.h"

#include <QByteArray>
#include <QPointer>
#include <QRect>

/// The launcher: one window, which is opened, closed and opened again.
class Launcher
{
public:
    struct Content
    {
        /// See LauncherWindow::setPresets().
        QStringList labels = {};
        QString problem = {};
        /// See PlacePicker::setPlaces().
        QStringList named = {};
        QStringList recent = {};
        bool canUndo = false;
    };

    /// \a closed is called after the window has been closed, by whatever.
    explicit Launcher(
        LauncherWindow::Handlers handlers, std::function<void()> closed = [] {});
    ~Launcher();
    Launcher(const Launcher &) = delete;
    Launcher &operator=(const Launcher &) = delete;

    /// Opens the window, before all others and with the keyboard as far as the desktop gives leave (see
    /// WindowActivation), where the pointer is if windows may say where they are. One that is open already
    /// comes there, and keeps what was typed and, unless folders are named, where it is to be created.
    void open(const Content &content, const QByteArray &activationToken);
    /// Presets that have changed; nothing if the window is closed.
    void setPresets(const QStringList &labels, const QString &problem);
    bool isOpen() const;
    /// Nothing is created.
    void close();

    /// Where the top left corner of a window of this size goes: to \a pointer, but into \a screen as far as
    /// it fits, and with its top left corner if it does not.
    static QPoint placeAt(const QPoint &pointer, const QSize &size, const QRect &screen);

private:
    void place(QWidget &window) const;

    const LauncherWindow::Handlers handlers_;
    const std::function<void()> closed_;
    QPointer<LauncherWindow> window_;
};
