// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/EndToEnd/PaneFixture.h"
#include "Tests/Session/VirtualScreen.h"

#include <functional>
#include <string>
#include <vector>

/// A user edits presets in the real window on a real screen, beside a window of another program. Every step
/// of theirs can be taken back and made again, and what is saved is compared each time.
class EditorFixture : public PaneFixture
{
protected:
    explicit EditorFixture(QSize screenSize = VirtualScreen::usualSize);

    /// Where a drop target stands that is no part of the pane: beside its window.
    static constexpr QPoint dropTargetPlace{1080, 600};
    static constexpr QPoint middleOfDropTarget{1180, 700};

    /// Opens the pane.
    void openPane();
    /// Opens the pane, and the other window beside it.
    void start();
    /// Does something that is one or more \a edits in the pane's history, and remembers what is stored then.
    void step(const std::string &what, int edits, const std::function<void()> &action);
    /// Something that changes nothing.
    void stepWithoutEdit(const std::string &what, const std::function<void()> &action);
    /// Undoes every step, one by one, and then makes each again; what is stored must be what it was each
    /// time.
    void undoAllAndRedoAll();

    /// Presses the key that opens a menu.
    void openMenu(const QString &key);
    /// Waits for the alert, which must say \a texts, and answers it by \a key.
    void answerAlert(const QStringList &texts, const QString &key);

    /// Saves, by leaving the window for the other one and coming back. The bytes of the file.
    QByteArray stored();
    void expectStored(const QByteArray &expected);

    VirtualScreen &screen_;
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

    /// The pane's, while no menu is open.
    qsizetype windows_ = 0;
    int saves_ = 0;
    QByteArray storedFirst_;
    std::vector<Step> steps_;
};
