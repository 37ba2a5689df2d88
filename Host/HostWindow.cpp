// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/HostWindow.h"

#include "Host/LeavingQuestion.h"
#include "Host/PaneChooser.h"
#include "Host/WindowPlaces.h"
#include "Hosting/ErrorPane.h"
#include "Hosting/PaneLoader.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QIcon>
#include <QLoggingCategory>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QThread>
#include <QVBoxLayout>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcWindow, "quenby.host.window")

/// What a page of the host begins with at least; as small as its content allows is for the user to choose.
constexpr QSize usualSize(480, 320);

} // namespace

HostWindow::HostWindow(QWidget *parent)
    : QWidget(parent)
    , layout_(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("hostWindow"));
    layout_->setContentsMargins({});
    for (const int key : {Qt::Key_Q, Qt::Key_W}) {
        auto *const shortcut = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        connect(shortcut, &QShortcut::activated, this, &QWidget::close);
    }
}

HostWindow::~HostWindow()
{
    // Whoever wants to know has left before.
    (void)leave();
}

void HostWindow::showPane(const QString &path)
{
    if ((session_ && path == panePath_ && !showsError()) || !mayLeave())
        return;
    // The user knows.
    (void)leave();
    panePath_ = path;
    setWindowTitle(PaneLoader::titleOf(path));
    begin(PaneLoader::load(path));
    if (isPainted_)
        updateIcon();
}

void HostWindow::openFiles(const QStringList &paths)
{
    waitingFiles_.add(paths);
}

void HostWindow::showError(const QString &reason)
{
    (void)leave();
    setWindowTitle(QCoreApplication::applicationName());
    begin(std::make_unique<ErrorPane>(reason));
}

void HostWindow::begin(std::unique_ptr<PreferencePane> pane)
{
    session_ = std::make_unique<PaneSession>(std::move(pane));
    setContent(session_->view());
    // Above the pane, but after it in the order of the keyboard, which the pane has first.
    layout_->insertWidget(0, &session_->strip());
    restorePlace();
    if (isVisible())
        session_->select();
}

void HostWindow::showChooser(const QStringList &paths)
{
    (void)leave();
    setWindowTitle(tr("Settings"));
    auto chooser = std::make_unique<PaneChooser>(paths);
    // Queued, because the list is still busy with the choice when it goes.
    connect(chooser.get(), &PaneChooser::chosen, this, &HostWindow::showPane, Qt::QueuedConnection);
    chooser_ = std::move(chooser);
    setContent(chooser_.get());
    restorePlace();
}

void HostWindow::setContent(QWidget *content)
{
    scroller_ = std::make_unique<ContentScroller>(*content);
    layout_->addWidget(scroller_.get(), 1);
    content->show();
    scroller_->show();
    if (content->focusProxy())
        content->setFocus();
}

bool HostWindow::mayLeave()
{
    return !session_ || LeavingQuestion::mayLeave(*session_, *this);
}

Result<> HostWindow::leave()
{
    Result<> saved;
    if (session_) {
        savePlace();
        saved = session_->end();
    }
    session_.reset();
    chooser_.reset();
    scroller_.reset();
    panePath_.clear();
    return saved;
}

void HostWindow::leaveWithoutDisplay()
{
    // The process ends with a failure in any case.
    if (session_)
        (void)session_->end();
}

void HostWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (session_)
        session_->select();
}

void HostWindow::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    if (isPainted_)
        return;
    isPainted_ = true;
    // Only now, because looking through icon themes takes longer than everything else here.
    QMetaObject::invokeMethod(this, &HostWindow::updateIcon, Qt::QueuedConnection);
}

void HostWindow::updateIcon()
{
    const QString path = PaneLoader::iconPathOf(panePath_);
    setWindowIcon(QIcon::fromTheme(QFileInfo(path).completeBaseName(), QIcon(path)));
}

void HostWindow::closeEvent(QCloseEvent *event)
{
    // Stays on screen until the pane is left, so that closing is not losing the focus first.
    event->ignore();
    if (mayLeave())
        Q_EMIT closing();
}

void HostWindow::restorePlace()
{
    if (panePath_.isEmpty() || !restoreGeometry(WindowPlaces::placeOf(panePath_)))
        resize(sizeHint().expandedTo(usualSize));
    // The place may be remembered from a larger screen. How wide the frame is, is known only later.
    const int title = style()->pixelMetric(QStyle::PM_TitleBarHeight);
    const int edge = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    const QSize frame(2 * edge, title + 2 * edge);
    if (!isMaximized() && !isFullScreen())
        resize(size().boundedTo(screen()->availableSize() - frame));
}

void HostWindow::savePlace() const
{
    if (panePath_.isEmpty())
        return;
    if (const Result<> remembered = WindowPlaces::remember(panePath_, saveGeometry()); !remembered)
        qCWarning(lcWindow) << "the place of the window is not kept:" << remembered.error;
}
