// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TemporaryHome.h"

#include <QPoint>
#include <QSize>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

/// A screen without hardware, on which programs show their windows in one of the ways that desktops have, and
/// what a person does in front of it. Its top is an X server on a display number that was free.
class Screen
{
public:
    static constexpr QSize usualSize{1280, 900};
    /// How long a drag is waited for.
    static constexpr std::chrono::seconds usualPatience{10};

    virtual ~Screen();
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    /// \a environment for a program that shows its windows here, with accessibility on.
    virtual QProcessEnvironment environmentFrom(QProcessEnvironment environment) const = 0;
    /// Whether what is typed goes to a window of \a program.
    virtual bool givesKeyboardTo(ChildProcess &program) const = 0;
    /// Whether a drag that begins now, in a window of \a dragging, has come along with the mouse. What is
    /// returned is asked again and again while the mouse moves about one place with the button pressed, until
    /// it is so; and then about another place.
    virtual std::function<bool()> arrivalOfDrag(ChildProcess &dragging) const = 0;

    /// Types a key, as xdotool names it, into the window that has the keyboard.
    void typeKey(const QString &key) const;
    /// Moves the mouse there, in the screen's coordinates, with whatever button is pressed.
    void moveMouse(const QPoint &point) const;
    void pressMouse() const;
    void releaseMouse() const;
    /// Presses the mouse at \a from and moves it, button down, to \a to until \a hasArrived says that the
    /// drag is where it should be. The caller releases the button. False if it does not get there.
    bool drag(const QPoint &from, const QPoint &to, const std::function<bool()> &hasArrived,
              std::chrono::milliseconds patience = usualPatience) const;
    /// Goes on with a drag that is somewhere else: moves about \a to until it has arrived.
    bool dragOn(const QPoint &to, const std::function<bool()> &hasArrived,
                std::chrono::milliseconds patience = usualPatience) const;
    /// The name of the X server's display, for programs that are not started here.
    QString display() const;
    /// The server dies, and with it the connections of its clients.
    void kill();
    /// What the tool \a program, a client of the X server, prints.
    QByteArray ask(const QString &program, const QStringList &arguments) const;

protected:
    Screen(const TemporaryHome &home, QSize size);

    /// Of programs that belong to the screen itself: they find their themes where the system has them.
    QProcessEnvironment ownEnvironment() const;

    static inline const QString xdotool = QStringLiteral("xdotool");
    static inline const QString displayVariable = QStringLiteral("DISPLAY");
    /// The mouse moves so often from the beginning of a drag to its end.
    static constexpr int stepsOfADrag = 8;

private:
    QProcessEnvironment environment_;
    std::unique_ptr<ChildProcess> server_;
};
