// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/PaneSession.h"

#include "Host/ErrorPane.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QWidget>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcSession, "quenby.host.session")

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

void PaneSession::select()
{
    if (isSelected_ || !pane_)
        return;
    isSelected_ = true;
    pane_->didSelect();
}

Result<> PaneSession::save()
{
    return pane_ ? pane_->save() : Result<>();
}

Result<> PaneSession::saveCopy(const QString &path)
{
    return pane_ ? pane_->saveCopy(path) : Result<>();
}

Result<> PaneSession::end()
{
    Result<> saved;
    if (std::exchange(isSelected_, false)) {
        saved = pane_->didUnselect();
        // What was in the way may have gone, and this is the last chance.
        if (!saved)
            saved = pane_->save();
    }
    strip_->setPane(nullptr);
    pane_.reset();
    return saved;
}
