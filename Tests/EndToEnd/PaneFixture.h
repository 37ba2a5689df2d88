// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/EndToEnd/DesktopUser.h"
#include "Tests/EndToEnd/PaneOnScreen.h"
#include "Tests/EndToEnd/QuenbySession.h"

#include <QDir>

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <memory>

/// A user opens the real window on a real screen, of whichever kind, and goes about in it.
class PaneFixture : public ::testing::Test
{
protected:
    /// A loaded machine, and a build with sanitizers, take their time.
    static constexpr std::chrono::seconds patience{30};

    explicit PaneFixture(const std::function<std::unique_ptr<Screen>(const TemporaryHome &home)> &makeScreen);

    /// Opens the pane, and waits until it has the keyboard.
    void openPane();
    /// The same in another program, which shows it on this screen.
    void openPaneIn(std::unique_ptr<ChildProcess> host);
    /// Ends the host as the end of a session does; it must end well.
    void leave();

    /// Where the pane keeps what it has not saved, and whether what is kept comes to have \a name in it.
    QDir recoveryFolder();
    bool keeps(const QByteArray &name);

    /// Adds an item beside or in the selected one, and names it.
    void addItem(const QString &key, const QString &name);
    /// Selects by the arrow keys.
    void goToItem(const QString &name);
    void goToPreset(const QString &label);
    /// Goes down in the open menu.
    void goToEntry(const QString &name);
    /// Presses \a keys, which lead to what is called \a name.
    void walkTo(const QString &name, const QStringList &keys);
    /// Shows what is on the tab "General", and gives the keyboard to the tab itself.
    void goToGeneralTab();
    void chooseEntry(const QString &name);
    void expectTree(const QStringList &tree);
    void expectPresets(const QStringList &presets);

    QuenbySession session_;
    const std::unique_ptr<Screen> anyScreen_;
    ScreenReader reader_;
    DesktopUser user_;
    PaneOnScreen pane_;
    std::unique_ptr<ChildProcess> host_;
};
