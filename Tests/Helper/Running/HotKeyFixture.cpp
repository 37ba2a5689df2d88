// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/Running/HotKeyFixture.h"

QNBSettings HotKeyFixture::with(const QNBKeyCombo &combo) const
{
    QNBSettings result = settings();
    result.showMenubar = false;
    result.shortcutCombo = combo;
    return result;
}

std::unique_ptr<ChildProcess> HotKeyFixture::startOther(const QNBKeyCombo &combo)
{
    store(with(combo), otherHome_);
    auto other = startIn(environmentOf(otherHome_));
    EXPECT_TRUE(waitUntilHeard(*other));
    return other;
}

std::unique_ptr<ChildProcess> HotKeyFixture::startInWaylandSession()
{
    QProcessEnvironment wayland = environment();
    wayland.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
    auto helper = startIn(wayland);
    EXPECT_TRUE(waitUntil([this] { return isOnBus(); }));
    return helper;
}

bool HotKeyFixture::waitForState(HotKeyState expected) const
{
    return waitUntil([&] { return state().hotKey == expected; });
}

bool HotKeyFixture::waitForLauncher(const ChildProcess &helper) const
{
    const QString window = screen_.windowOf(helper.pid());
    return !window.isEmpty() && waitUntil([&] { return screen_.hasKeyboard(window); });
}

bool HotKeyFixture::waitForLog(ChildProcess &helper, const QByteArray &text, qsizetype times)
{
    return waitUntil([&] { return helper.errors().count(text) >= times; });
}

bool HotKeyFixture::waitUntilHeard(ChildProcess &helper, qsizetype times)
{
    return waitForLog(helper, "the hot key is heard by", times);
}
