// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBRecoveryFile.h"
#include "Toolkit/PaneNotice.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <functional>
#include <vector>

class PreferencePaneListener;

/// Sees to it that a crash takes no more of the user's work than the last moments, though the domain is
/// written at its own times: keeps what is unsaved in a recovery file, and offers what earlier panes have
/// left.
class QNBUnsavedState final : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(QNBUnsavedState)

public:
    /// What it asks of the pane.
    struct Pane
    {
        /// The settings as they are shown now.
        std::function<QNBSettings()> shownSettings;
        /// False if they only stand in for stored ones that cannot be read, and nobody has edited them.
        std::function<bool()> isEdited;
        /// Shows others, as one step of the history called \a step.
        std::function<void(const QNBSettings &settings, const QString &step)> restore;
        /// When the stored settings changed last; invalid if there are none.
        std::function<QDateTime()> lastSave;
        /// Whom to tell; may be null.
        std::function<PreferencePaneListener *()> listener;
    };

    /// \a folder is where recovery files are; without one, nothing is kept. \a delay is how long an edit may
    /// be in memory only.
    QNBUnsavedState(Pane pane, const QString &folder, std::chrono::milliseconds delay);

    /// The settings are others now; they are kept when the delay is over. What is being typed is no edit yet.
    void wasEdited();
    /// What is shown is stored: nothing is kept of it any more.
    void wasSaved();
    /// Keeps what is shown, without a delay; at the latest when this goes it is on the disk.
    void keep();
    /// Looks for what others have left and differs from what is shown, and offers it: the latest, and once
    /// that is restored or discarded, what is older. To be called when what is shown is what is stored, or
    /// will be next.
    void offerWhatWasLeft();

private:
    /// What is shown already, or was left by a later pane too, is not offered.
    void discardWhatIsKnown();
    void offerNext();
    PaneNotice offerOf(const QNBLeftRecovery &left);
    void restore();
    void discard();
    void couldNotBeKept(const QString &reason);

    Pane pane_;
    const QString folder_;
    QTimer timer_;
    bool wasFailureTold_ = false;
    /// The next to be offered comes first.
    std::vector<QNBLeftRecovery> left_;
    /// A later one was offered before, and restored or discarded.
    bool isOlderLeft_ = false;
    /// Restored, and neither saved nor in the own file yet: would be offered again after a crash.
    std::vector<QNBLeftRecovery> restored_;
    QNBRecoveryFile file_;
};
