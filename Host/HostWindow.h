// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Host/ContentScroller.h"
#include "Hosting/PaneSession.h"
#include "Hosting/WaitingFiles.h"

#include <QStringList>
#include <QWidget>

#include <memory>

QT_BEGIN_NAMESPACE
class QVBoxLayout;
QT_END_NAMESPACE

/// The host's window, which shows one pane at a time. It remembers its size and place for each pane, and
/// begins no larger than its screen.
class HostWindow : public QWidget
{
    Q_OBJECT
public:
    explicit HostWindow(QWidget *parent = nullptr);
    ~HostWindow() override;

    /// Leaves the pane that is shown, if it is another one, and shows the pane at \a path, or a page that
    /// says why it cannot; then the next call tries again. The user may keep a pane that cannot save.
    void showPane(const QString &path);
    /// Lets the user choose among the panes at \a paths.
    void showChooser(const QStringList &paths);
    /// Has the pane take in these files: the one that is shown or else the next one, once no panel of it
    /// waits for an answer.
    void openFiles(const QStringList &paths);
    /// Shows a page with \a reason.
    void showError(const QString &reason);
    /// Whether a page says why there is no pane.
    bool showsError() const { return session_ && session_->isErrorPage(); }
    /// Leaves the pane for good, and asks nobody. What became of its last save; success without a pane.
    Result<> leave();
    /// Leaves the pane for good when the display may have gone: its view stays, and so does the noted place.
    void leaveWithoutDisplay();

Q_SIGNALS:
    /// The user wants the window closed, and the pane has saved or may go without. It and the pane, which may
    /// be in the middle of something, are still there, until whoever hears this ends the program.
    void closing();

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    /// Whether the pane has saved, or the user lets it go all the same.
    bool mayLeave();
    void begin(std::unique_ptr<PreferencePane> pane);
    void setContent(QWidget *content);
    void updateIcon();
    void restorePlace();
    void savePlace() const;

    QVBoxLayout *layout_ = nullptr;
    /// Whose content goes before, with what made it.
    std::unique_ptr<ContentScroller> scroller_;
    std::unique_ptr<PaneSession> session_;
    std::unique_ptr<QWidget> chooser_;
    QString panePath_;
    /// Not before the first paint, which they would hold up.
    WaitingFiles waitingFiles_{[this] { return isPainted_ ? session_.get() : nullptr; }};
    bool isPainted_ = false;
};
