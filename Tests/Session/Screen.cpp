// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/Screen.h"

#include <csignal>

namespace {

const QString leftButton = QStringLiteral("1");
/// Of any screen, at which the mouse stops.
constexpr QPoint beyondCorner(9999, 9999);

} // namespace

Screen::Screen(const TemporaryHome &home, QSize size)
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
}

Screen::~Screen() = default;

QProcessEnvironment Screen::ownEnvironment() const
{
    QProcessEnvironment result = environment_;
    result.remove(QStringLiteral("XDG_DATA_DIRS"));
    return result;
}

QByteArray Screen::ask(const QString &program, const QStringList &arguments) const
{
    ChildProcess tool(program, arguments, environment_);
    tool.waitForEnd();
    return tool.output().trimmed();
}

QString Screen::display() const
{
    return environment_.value(displayVariable);
}

void Screen::typeKey(const QString &key) const
{
    ask(xdotool, {QStringLiteral("key"), QStringLiteral("--clearmodifiers"), key});
}

void Screen::moveMouse(const QPoint &point) const
{
    ask(xdotool, {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
}

void Screen::pressMouse() const
{
    ask(xdotool, {QStringLiteral("mousedown"), leftButton});
}

void Screen::releaseMouse() const
{
    ask(xdotool, {QStringLiteral("mouseup"), leftButton});
}

bool Screen::drag(const QPoint &from, const QPoint &to, const std::function<bool()> &hasArrived,
                  std::chrono::milliseconds patience) const
{
    // A nested compositor follows the mouse by steps, may miss the first, and keeps it inside: from corner to
    // corner it catches up with it.
    moveMouse(beyondCorner);
    moveMouse(QPoint());
    moveMouse(from);
    pressMouse();
    for (int step = 1; step < stepsOfADrag; ++step)
        moveMouse(from + (to - from) * step / stepsOfADrag);
    return dragOn(to, hasArrived, patience);
}

bool Screen::dragOn(const QPoint &to, const std::function<bool()> &hasArrived,
                    std::chrono::milliseconds patience) const
{
    // The programs may still be busy with the steps so far; a mouse that rests tells them nothing.
    int jitter = 0;
    return waitUntil(
        [&] {
            jitter = 1 - jitter;
            moveMouse(to + QPoint(jitter, 0));
            return hasArrived();
        },
        patience);
}

void Screen::kill()
{
    server_->signal(SIGKILL);
    server_->waitForEnd();
}
