// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/DesktopUser.h"

namespace {

/// So often in a row the picture of a drag has to be in the same place below the pointer.
constexpr int timesAtRest = 3;
const QString xdotool = QStringLiteral("xdotool");
const QString leftButton = QStringLiteral("1");
const QString rightButton = QStringLiteral("3");

QStringList move(QPoint place)
{
    return {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
}

} // namespace

void DesktopUser::presses(const QStringList &keys) const
{
    does(QStringList{QStringLiteral("key"), QStringLiteral("--clearmodifiers")} + keys);
}

void DesktopUser::types(const QString &text) const
{
    does({QStringLiteral("type"), QStringLiteral("--clearmodifiers"), text});
}

void DesktopUser::clicks(QPoint place) const
{
    does(move(place) + QStringList{QStringLiteral("click"), leftButton});
}

void DesktopUser::rightClicks(QPoint place) const
{
    does(move(place) + QStringList{QStringLiteral("click"), rightButton});
}

bool DesktopUser::drags(QPoint from, QPoint to, const ChildProcess &dragging) const
{
    const QStringList windowsBefore = screen_.windowsOf(dragging.pid());
    std::optional<QPoint> distance;
    int atRest = 0;
    const auto hasArrived = [&] {
        for (const QString &window : screen_.windowsOf(dragging.pid())) {
            if (windowsBefore.contains(window))
                continue;
            const QPoint next = distanceToPointer(window);
            atRest = distance == next ? atRest + 1 : 0;
            distance = next;
        }
        return atRest >= timesAtRest;
    };
    const bool result = screen_.drag(from, to, hasArrived);
    if (!result)
        presses(QStringLiteral("Escape"));
    screen_.releaseMouse();
    return result;
}

QPoint DesktopUser::distanceToPointer(const QString &window) const
{
    const QList<QByteArray> lines =
        screen_
            .ask(xdotool, {QStringLiteral("getmouselocation"), QStringLiteral("--shell"),
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

void DesktopUser::does(const QStringList &arguments) const
{
    screen_.ask(xdotool, arguments);
}
