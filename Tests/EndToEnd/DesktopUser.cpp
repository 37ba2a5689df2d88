// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/DesktopUser.h"

namespace {

/// Steps of a drag, and the tool's pause between them: a drag that jumps is no drag to most programs.
constexpr int dragSteps = 8;
const QString dragPause = QStringLiteral("0.08");
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

bool DesktopUser::drags(QPoint from, QPoint to, const std::function<bool()> &isReady) const
{
    QStringList arguments = move(from) + QStringList{QStringLiteral("mousedown"), leftButton};
    for (int step = 1; step <= dragSteps; ++step)
        arguments +=
            QStringList{QStringLiteral("sleep"), dragPause} + move(from + (to - from) * step / dragSteps);
    // The pointer rests where it lets go.
    arguments += QStringList{QStringLiteral("sleep"), dragPause} + move(to);
    does(arguments);
    const bool result = waitUntil(isReady);
    if (!result)
        presses(QStringLiteral("Escape"));
    does({QStringLiteral("mouseup"), leftButton});
    return result;
}
