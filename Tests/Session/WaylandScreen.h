// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/Screen.h"

#include <QTemporaryDir>

#include <memory>

/// A Wayland compositor whose one output is a window of an X server, by which it gets mouse and keyboard as
/// well. There is no X display for the programs that show their windows here.
///
/// The window that came last covers all others, and a place in it is the same place on the screen.
class WaylandScreen final : public Screen
{
public:
    explicit WaylandScreen(const TemporaryHome &home, QSize size = usualSize);
    ~WaylandScreen() override;

    QProcessEnvironment environmentFrom(QProcessEnvironment environment) const override;
    bool givesKeyboardTo(ChildProcess &program) const override;
    std::function<bool()> arrivalOfDrag(ChildProcess &dragging) const override;

private:
    QTemporaryDir folder_;
    std::unique_ptr<ChildProcess> compositor_;
};
