// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/DesktopUser.h"

namespace {

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

bool DesktopUser::drags(QPoint from, QPoint to, ChildProcess &dragging) const
{
    const bool result = screen_.drag(from, to, screen_.arrivalOfDrag(dragging), patience_);
    if (!result)
        presses(QStringLiteral("Escape"));
    screen_.releaseMouse();
    return result;
}

void DesktopUser::does(const QStringList &arguments) const
{
    screen_.ask(xdotool, arguments);
}
