// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "SystemSettings/PanePage.h"

#include "Hosting/ErrorPane.h"
#include "Hosting/PaneFinder.h"
#include "Hosting/PaneLoader.h"
#include "Platform/Desktop/HomeOwner.h"
#include "Toolkit/WindowActivation.h"

#include <QHideEvent>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The window that shows the page waits for it.
constexpr auto otherHostTimeout = 1000ms;
/// Until it is looked again whether another host still shows the pane.
constexpr auto untilNextLook = 500ms;
/// Until a hidden page tries again to save what could not be saved.
constexpr auto untilNextSave = 3s;

Result<QString> findPane(const QString &name, const QStringList &folders)
{
    const Result<> home = HomeOwner::check();
    return home ? PaneFinder::pathOfPane(name, folders) : Result<QString>::failure(home.error);
}

} // namespace

PanePage::PanePage(const QString &paneName, const QStringList &folders, QWidget *parent)
    : QWidget(parent)
    , paneName_(paneName)
    , folders_(folders)
{
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    connect(&nextLook_, &QTimer::timeout, this, [this] { begin(Manner::Patient); });
    giveWay_.setSingleShot(true);
    connect(&giveWay_, &QTimer::timeout, this, [this] {
        // As long as something is not saved nobody else may show the presets as they were.
        if (!session_->unselect()) {
            giveWay_.start(untilNextSave);
            return;
        }
        // With the pane goes what it holds of an earlier session, which others may offer now.
        (void)session_->end();
        guard_.reset();
    });
    // Now, because the window takes its size from what is in it.
    begin(Manner::Insistent);
}

PanePage::~PanePage() = default;

QSize PanePage::sizeHint() const
{
    const bool lacksNotice = session_ && session_->strip().isHidden();
    return QWidget::sizeHint() + QSize(0, lacksNotice ? session_->strip().sizeHint().height() : 0);
}

void PanePage::begin(Manner manner)
{
    const Result<QString> bundlePath = findPane(paneName_, folders_);
    if (!bundlePath) {
        nextLook_.stop();
        showsPane_ = true;
        present([&] { return std::make_unique<ErrorPane>(bundlePath.error); });
        return;
    }
    const InstanceGuard::Outcome outcome = takeGuard(manner);
    if (outcome == InstanceGuard::Outcome::First) {
        nextLook_.stop();
        showsPane_ = true;
        // What another host has saved meanwhile is read anew.
        present([&] { return PaneLoader::load(*bundlePath); });
        if (session_->isErrorPage())
            guard_.reset();
        else
            takeRequests();
    } else if (std::exchange(showsPane_, false) || !session_) {
        present([outcome] {
            return std::make_unique<ErrorPane>(
                outcome == InstanceGuard::Outcome::Handed
                    ? tr("The settings are open in another window. "
                         "The presets are shown here as soon as that one is closed.")
                    : InstanceGuard::whyNoAnswer());
        });
    }
}

InstanceGuard::Outcome PanePage::takeGuard(Manner manner)
{
    auto guard = std::make_unique<InstanceGuard>();
    auto outcome = InstanceGuard::Outcome::Handed;
    if (manner == Manner::Insistent)
        outcome = guard->begin({}, otherHostTimeout);
    else if (guard->becomeFirst())
        outcome = InstanceGuard::Outcome::First;
    if (outcome == InstanceGuard::Outcome::First)
        guard_ = std::move(guard);
    return outcome;
}

void PanePage::present(const std::function<std::unique_ptr<PreferencePane>()> &makePane)
{
    const bool hadKeyboard = isAncestorOf(window()->focusWidget());
    // It goes before the next one comes, which reads what it has left.
    session_.reset();
    session_ = std::make_unique<PaneSession>(makePane());
    auto *const page = static_cast<QVBoxLayout *>(layout());
    page->addWidget(session_->view(), 1);
    // Above the pane, but after it in the order of the keyboard, which the pane has first.
    page->insertWidget(0, &session_->strip());
    setFocusProxy(session_->view());
    // At once, so that its size counts.
    session_->view()->show();
    if (hadKeyboard)
        setFocus();
    if (isVisible())
        session_->select();
}

void PanePage::takeRequests()
{
    if (guard_->becomeFirst())
        guard_->handleWith([this](const InstanceGuard::Request &request) {
            waitingFiles_.add(request.files);
            WindowActivation::bringToFront(*window(), request.activationToken);
        });
}

void PanePage::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    giveWay_.stop();
    const bool isTried = std::exchange(isNew_, false) && showsPane_;
    if (!guard_ && !isTried) {
        nextLook_.start(untilNextLook);
        begin(Manner::Patient);
    } else if (guard_ && !guard_->takesRequests()) {
        takeRequests();
    }
    session_->select();
}

void PanePage::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (event->spontaneous())
        return;
    nextLook_.stop();
    // Who is brought here would see another page.
    if (guard_)
        guard_->close();
    giveWay_.start(session_->unselect() ? 0ms : untilNextSave);
}
