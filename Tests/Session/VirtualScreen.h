// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TemporaryHome.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QStringList>

#include <functional>
#include <memory>

/// An X server without hardware, on a display number that was free, with a window manager.
class VirtualScreen
{
public:
    static constexpr QSize usualSize{1280, 900};

    explicit VirtualScreen(const TemporaryHome &home, QSize size = usualSize);

    /// \a environment for a program that shows its windows here, with accessibility on.
    QProcessEnvironment environmentFrom(QProcessEnvironment environment) const;

    /// The windows of the process \a pid that the screen shows, menus and the like among them.
    QStringList windowsOf(qint64 pid) const;
    /// The window of the process \a pid that the screen shows; waits for it. Empty if none comes.
    QString windowOf(qint64 pid) const;
    /// The window with the title \a title, of whichever program; waits for it. Empty if none comes.
    QString windowNamed(const QString &title) const;
    /// Where a window is on the screen, without its frame.
    QRect placeOf(const QString &window) const;
    /// Activates a window as the user would, and waits until it has the focus.
    bool activate(const QString &window) const;
    QString activeWindow() const;
    /// Whether the window is the active one, and what is typed goes there.
    bool hasKeyboard(const QString &window) const;
    /// The name of the display, for programs that are not started here.
    QString display() const;
    /// Types a key, as xdotool names it, into the active window.
    void typeKey(const QString &key) const;
    /// Moves the mouse there, in the screen's coordinates, with whatever button is pressed.
    void moveMouse(const QPoint &point) const;
    void pressMouse() const;
    void releaseMouse() const;
    /// Presses the mouse at \a from and moves it, button down, to \a to until \a hasArrived says that the
    /// drag is where it should be. The caller releases the button. False if it does not get there.
    bool drag(const QPoint &from, const QPoint &to, const std::function<bool()> &hasArrived) const;
    /// The server dies, and with it the connections of its clients.
    void kill();
    /// The window manager dies, and leaves what it said of itself.
    void killWindowManager();
    /// What the tool \a program prints.
    QByteArray ask(const QString &program, const QStringList &arguments) const;

private:
    QProcessEnvironment environment_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> windowManager_;
};
