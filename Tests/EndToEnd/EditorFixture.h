// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/EndToEnd/DesktopUser.h"
#include "Tests/EndToEnd/PaneOnScreen.h"
#include "Tests/EndToEnd/QuenbySession.h"

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <vector>

/// A user edits presets in the real window on a real screen, beside a window of another program. Every step
/// of theirs can be taken back and made again, and what is saved is compared each time.
class EditorFixture : public ::testing::Test
{
protected:
    /// A loaded machine, and a build with sanitizers, take their time.
    static constexpr std::chrono::seconds patience{30};

    explicit EditorFixture(QSize screenSize = VirtualScreen::usualSize);

    /// Opens the pane.
    void openPane();
    /// Opens the pane, and the other window beside it.
    void start();
    /// Ends the host as the end of a session does; it must end well.
    void leave();
    /// Does something that is one or more \a edits in the pane's history, and remembers what is stored then.
    void step(const std::string &what, int edits, const std::function<void()> &action);
    /// Something that changes nothing.
    void stepWithoutEdit(const std::string &what, const std::function<void()> &action);
    /// Undoes every step, one by one, and then makes each again; what is stored must be what it was each
    /// time.
    void undoAllAndRedoAll();

    /// Adds an item beside or in the selected one, and names it.
    void addItem(const QString &key, const QString &name);
    /// Selects by the arrow keys.
    void goToItem(const QString &name);
    void goToPreset(const QString &label);
    /// Presses the key that opens a menu.
    void openMenu(const QString &key);
    /// Goes down in the open menu.
    void goToEntry(const QString &name);
    /// Presses \a keys, which lead to what is called \a name.
    void walkTo(const QString &name, const QStringList &keys);
    /// Shows what is on the tab "General", and gives the keyboard to the tab itself.
    void goToGeneralTab();
    void chooseEntry(const QString &name);
    /// Waits for the alert, which must say \a texts, and answers it by \a key.
    void answerAlert(const QStringList &texts, const QString &key);
    void expectTree(const QStringList &tree);
    void expectPresets(const QStringList &presets);

    /// Saves, by leaving the window for the other one and coming back. The bytes of the file.
    QByteArray stored();
    void expectStored(const QByteArray &expected);

    QuenbySession session_;
    VirtualScreen screen_;
    ScreenReader reader_;
    DesktopUser user_;
    PaneOnScreen pane_;
    std::unique_ptr<ChildProcess> host_;
    std::unique_ptr<ChildProcess> other_;
    QString window_;
    QString otherWindow_;

private:
    struct Step
    {
        std::string what;
        int edits;
        QByteArray storedAfter;
    };

    int saves_ = 0;
    QByteArray storedFirst_;
    std::vector<Step> steps_;
};
