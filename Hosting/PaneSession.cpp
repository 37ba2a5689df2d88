// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneSession.h"

#include "Hosting/ErrorPane.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QWidget>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcSession, "quenby.hosting.session")

} // namespace

PaneSession::PaneSession(std::unique_ptr<PreferencePane> pane)
    : strip_(new NoticeStrip)
    , pane_(std::move(pane))
{
    pane_->setListener(strip_);
    view_ = pane_->loadMainView();
    if (!view_) {
        qCWarning(lcSession) << "the pane made no view";
        pane_ = std::make_unique<ErrorPane>(
            QCoreApplication::translate("PaneSession", "The pane could not make its view."));
        view_ = pane_->loadMainView();
    }
    strip_->setPane(pane_.get());
    pane_->mainViewDidLoad();
}

PaneSession::~PaneSession()
{
    // Whoever wants to know has ended it before.
    (void)end();
    delete view_;
    delete strip_;
}

bool PaneSession::isErrorPage() const
{
    return dynamic_cast<const ErrorPane *>(pane_.get());
}

void PaneSession::select()
{
    if (isSelected_ || !pane_)
        return;
    isSelected_ = true;
    pane_->didSelect();
}

Result<> PaneSession::save()
{
    if (pane_)
        lastSave_ = pane_->save();
    return lastSave_;
}

Result<> PaneSession::saveCopy(const QString &path)
{
    return pane_ ? pane_->saveCopy(path) : Result<>();
}

void PaneSession::openFiles(const QStringList &paths)
{
    if (pane_)
        pane_->openFiles(paths);
}

Result<> PaneSession::unselect()
{
    if (std::exchange(isSelected_, false))
        lastSave_ = pane_->didUnselect();
    else if (!lastSave_)
        return save();
    return lastSave_;
}

Result<> PaneSession::end()
{
    // What was in the way may have gone, and this is the last chance.
    if (!isGivenUp_ && !unselect())
        (void)save();
    strip_->setPane(nullptr);
    pane_.reset();
    return lastSave_;
}
