// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/Screen.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QStringList>

#include <memory>

/// An X screen with a window manager.
class VirtualScreen final : public Screen
{
public:
    explicit VirtualScreen(const TemporaryHome &home, QSize size = usualSize);

    QProcessEnvironment environmentFrom(QProcessEnvironment environment) const override;
    bool givesKeyboardTo(ChildProcess &program) const override;
    std::function<bool()> arrivalOfDrag(ChildProcess &dragging) const override;

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
    /// The window manager dies, and leaves what it said of itself.
    void killWindowManager();

private:
    /// How far from the pointer a window is.
    QPoint distanceToPointer(const QString &window) const;

    std::unique_ptr<ChildProcess> windowManager_;
};
