// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/VirtualScreen.h"

#include <csignal>
#include <optional>

namespace {

const QString xprop = QStringLiteral("xprop");
/// So often in a row the picture of a drag has to be in the same place below the pointer.
constexpr int timesAtRest = 3;

} // namespace

VirtualScreen::VirtualScreen(const TemporaryHome &home, QSize size)
    : Screen(home, size)
    , windowManager_(std::make_unique<ChildProcess>(
          QStringLiteral("openbox"), QStringList{QStringLiteral("--sm-disable")}, ownEnvironment()))
{
    // The last of what it announces when it starts.
    const auto isReady = [this] {
        return !windowManager_->isRunning() ||
               ask(xprop, {QStringLiteral("-root"), QStringLiteral("_NET_NUMBER_OF_DESKTOPS")}).contains('=');
    };
    if (!waitUntil(isReady) || !windowManager_->isRunning())
        qFatal("no window manager: %s", windowManager_->errors().constData());
}

QProcessEnvironment VirtualScreen::environmentFrom(QProcessEnvironment environment) const
{
    environment.insert(displayVariable, display());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    return environment;
}

bool VirtualScreen::givesKeyboardTo(ChildProcess &program) const
{
    const QString window = activeWindow();
    return windowsOf(program.pid()).contains(window) && hasKeyboard(window);
}

std::function<bool()> VirtualScreen::arrivalOfDrag(ChildProcess &dragging) const
{
    // The picture of what is dragged is a window of its own.
    return [this, pid = dragging.pid(), windowsBefore = windowsOf(dragging.pid()),
            distance = std::optional<QPoint>(), atRest = 0]() mutable {
        const QStringList windows = windowsOf(pid);
        for (const QString &window : windows) {
            if (windowsBefore.contains(window))
                continue;
            const QPoint next = distanceToPointer(window);
            atRest = distance == next ? atRest + 1 : 0;
            distance = next;
        }
        if (atRest < timesAtRest)
            return false;
        atRest = 0;
        return true;
    };
}

QStringList VirtualScreen::windowsOf(qint64 pid) const
{
    const QByteArray found = ask(xdotool, {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                           QStringLiteral("--pid"), QString::number(pid)});
    return QString::fromLatin1(found).split(u'\n', Qt::SkipEmptyParts);
}

QString VirtualScreen::windowOf(qint64 pid) const
{
    QStringList windows;
    waitUntil([&] {
        windows = windowsOf(pid);
        return !windows.isEmpty();
    });
    return windows.isEmpty() ? QString() : windows.constLast();
}

QString VirtualScreen::windowNamed(const QString &title) const
{
    QString window;
    waitUntil([&] {
        window =
            QString::fromLatin1(ask(xdotool, {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                              QStringLiteral("--name"), QStringLiteral("^%1$").arg(title)}));
        return !window.isEmpty();
    });
    return window;
}

QString VirtualScreen::activeWindow() const
{
    return QString::fromLatin1(ask(xdotool, {QStringLiteral("getactivewindow")}));
}

bool VirtualScreen::hasKeyboard(const QString &window) const
{
    // The window manager makes it active, and its program takes the keyboard when it is told so.
    return activeWindow() == window &&
           QString::fromLatin1(ask(xdotool, {QStringLiteral("getwindowfocus")})) == window;
}

QRect VirtualScreen::placeOf(const QString &window) const
{
    const QByteArray said = ask(QStringLiteral("xwininfo"), {QStringLiteral("-id"), window});
    const auto number = [&said](const QByteArray &label) {
        const qsizetype start = said.indexOf(label) + label.size();
        return said.mid(start, said.indexOf('\n', start) - start).trimmed().toInt();
    };
    return {number("Absolute upper-left X:"), number("Absolute upper-left Y:"), number("Width:"),
            number("Height:")};
}

bool VirtualScreen::activate(const QString &window) const
{
    // Another window that appears only now may take the keyboard away again.
    return waitUntil([&] {
        ask(xdotool, {QStringLiteral("windowactivate"), window});
        return hasKeyboard(window);
    });
}

void VirtualScreen::killWindowManager()
{
    windowManager_->signal(SIGKILL);
    windowManager_->waitForEnd();
}

QPoint VirtualScreen::distanceToPointer(const QString &window) const
{
    const QList<QByteArray> lines =
        ask(xdotool, {QStringLiteral("getmouselocation"), QStringLiteral("--shell"),
                      QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window})
            .split('\n');
    QPoint result;
    int sign = -1;
    for (const QByteArray &line : lines) {
        // The pointer's come first.
        if (line.startsWith("X="))
            result.rx() += sign * line.mid(2).toInt();
        if (line.startsWith("Y=")) {
            result.ry() += sign * line.mid(2).toInt();
            sign = 1;
        }
    }
    return result;
}
