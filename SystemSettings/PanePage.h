// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Hosting/InstanceGuard.h"
#include "Hosting/PaneSession.h"
#include "Hosting/WaitingFiles.h"

#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

/// A pane as a page in another program's window: the notices, and below them the pane's view.
///
/// That program tells for certain only when the page is shown and when it is hidden, so there the pane is
/// selected and left; it may delete the page at any time, and with it the pane, which goes before its view. A
/// page that cannot save asks nobody: the strip tells of it, what was done is kept aside, and while the page
/// is hidden it tries again.
///
/// Who opens the settings elsewhere meanwhile is brought here, and the other way round: two panes would
/// overwrite each other's presets. Only a hidden page that has not saved yet neither gives way nor has
/// anybody brought to it. A page that has given way shows the pane once it can, and one that is shown again
/// looks anew for a pane that was missing.
class PanePage : public QWidget
{
    Q_OBJECT
public:
    /// Shows the bundle \a paneName of \a folders, as PaneFinder::pathOfPane() finds it, or why it cannot.
    PanePage(const QString &paneName, const QStringList &folders, QWidget *parent = nullptr);
    ~PanePage() override;

    /// With room for a notice, which may come later.
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    enum class Manner {
        /// Whoever shows the pane already is to come to the front.
        Insistent,
        Patient,
    };

    /// Shows the pane if nobody else does, or else says so.
    void begin(Manner manner);
    InstanceGuard::Outcome takeGuard(Manner manner);
    void present(const std::function<std::unique_ptr<PreferencePane>()> &makePane);
    void takeRequests();

    const QString paneName_;
    const QStringList folders_;
    /// Not shown yet: what it was made with is for the first display.
    bool isNew_ = true;
    /// The pane, or why it cannot be shown; not that another host shows it.
    bool showsPane_ = false;
    /// Held as long as the pane may have something to save. Takes requests while the page is shown.
    std::unique_ptr<InstanceGuard> guard_;
    std::unique_ptr<PaneSession> session_;
    /// Pages are hidden and shown again in one go when windows are put together. Goes on until all is saved.
    QTimer giveWay_;
    /// While another host shows the pane, and the page is shown.
    QTimer nextLook_;
    WaitingFiles waitingFiles_{[this] { return guard_ && isVisible() ? session_.get() : nullptr; }};
};
