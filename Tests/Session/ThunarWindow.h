// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/ScreenReader.h"
#include "Tests/Session/VirtualScreen.h"

#include <QPoint>
#include <QString>

#include <gtest/gtest.h>
#include <memory>
#include <optional>

/// The file manager Thunar, with a window that shows a folder, to its user.
class ThunarWindow
{
public:
    ThunarWindow(const VirtualScreen &screen, const ScreenReader &reader)
        : screen_(screen)
        , reader_(reader)
    {
    }

    /// Starts \a program, with \a environment from the session and the screen, on \a folder; waits until it
    /// says of it what begins with \a status.
    void open(const QString &program, const QString &folder, const QString &status,
              QProcessEnvironment environment);

    /// What the bar below the folder says of it, or of what is selected in it.
    QString status() const;
    void openMenuOfBackground() const;
    /// Of everything that the folder holds, which is \a name alone.
    void openMenuOfInside(const QString &name) const;
    /// Goes through the open menu to the entry \a label in the submenu \a title.
    void choosePreset(const QString &title, const QString &label) const;

private:
    std::optional<Accessible> shown(const QString &role, const QString &name) const;
    void click(const QPoint &place, const QString &button) const;
    void choose(const QString &role, const QString &name) const;

    const VirtualScreen &screen_;
    const ScreenReader &reader_;
    std::unique_ptr<ChildProcess> thunar_;
};
