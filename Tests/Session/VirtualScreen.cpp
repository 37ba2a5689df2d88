// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/VirtualScreen.h"

#include <csignal>

namespace {

const QString xdotool = QStringLiteral("xdotool");
const QString xprop = QStringLiteral("xprop");
const QString leftButton = QStringLiteral("1");
const QString displayVariable = QStringLiteral("DISPLAY");
constexpr int stepsOfADrag = 8;

} // namespace

VirtualScreen::VirtualScreen(const TemporaryHome &home, QSize size)
    : environment_(home.environment())
{
    server_ = std::make_unique<ChildProcess>(
        QStringLiteral("Xvfb"),
        // Without repeated keys: on a loaded machine a key is held for long, and nobody means to.
        QStringList{QStringLiteral("-r"), QStringLiteral("-displayfd"), QStringLiteral("1"),
                    QStringLiteral("-screen"), QStringLiteral("0"),
                    QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height()),
                    QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset")},
        environment_);
    if (!waitUntil([this] { return server_->output().contains('\n'); }))
        qFatal("no screen: %s", server_->errors().constData());
    environment_.insert(displayVariable, u':' + QString::fromLatin1(server_->output().trimmed()));

    // It finds its theme where the system has it.
    QProcessEnvironment systemData = environment_;
    systemData.remove(QStringLiteral("XDG_DATA_DIRS"));
    windowManager_ = std::make_unique<ChildProcess>(QStringLiteral("openbox"),
                                                    QStringList{QStringLiteral("--sm-disable")}, systemData);
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
    environment.insert(displayVariable, environment_.value(displayVariable));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    return environment;
}

QByteArray VirtualScreen::ask(const QString &program, const QStringList &arguments) const
{
    ChildProcess tool(program, arguments, environment_);
    tool.waitForEnd();
    return tool.output().trimmed();
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

QString VirtualScreen::display() const
{
    return environment_.value(displayVariable);
}

bool VirtualScreen::activate(const QString &window) const
{
    // Another window that appears only now may take the keyboard away again.
    return waitUntil([&] {
        ask(xdotool, {QStringLiteral("windowactivate"), window});
        return hasKeyboard(window);
    });
}

void VirtualScreen::typeKey(const QString &key) const
{
    ask(xdotool, {QStringLiteral("key"), QStringLiteral("--clearmodifiers"), key});
}

void VirtualScreen::moveMouse(const QPoint &point) const
{
    ask(xdotool, {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
}

void VirtualScreen::pressMouse() const
{
    ask(xdotool, {QStringLiteral("mousedown"), leftButton});
}

void VirtualScreen::releaseMouse() const
{
    ask(xdotool, {QStringLiteral("mouseup"), leftButton});
}

bool VirtualScreen::drag(const QPoint &from, const QPoint &to, const std::function<bool()> &hasArrived) const
{
    moveMouse(from);
    pressMouse();
    for (int step = 1; step < stepsOfADrag; ++step)
        moveMouse(from + (to - from) * step / stepsOfADrag);
    // The programs may still be busy with the steps so far; a mouse that rests tells them nothing.
    int jitter = 0;
    return waitUntil([&] {
        jitter = 1 - jitter;
        moveMouse(to + QPoint(jitter, 0));
        return hasArrived();
    });
}

void VirtualScreen::killWindowManager()
{
    windowManager_->signal(SIGKILL);
    windowManager_->waitForEnd();
}

void VirtualScreen::kill()
{
    server_->signal(SIGKILL);
    server_->waitForEnd();
}
