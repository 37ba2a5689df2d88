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
    : pane_(std::move(pane))
    , view_(pane_->loadMainView())
{
    if (!view_) {
        qCWarning(lcSession) << "the pane made no view";
        pane_ = std::make_unique<ErrorPane>(
            QCoreApplication::translate("PaneSession", "The pane could not make its view."));
        view_ = pane_->loadMainView();
    }
    pane_->mainViewDidLoad();
}

PaneSession::~PaneSession()
{
    end();
    delete view_;
}

void PaneSession::select()
{
    if (isSelected_ || !pane_)
        return;
    isSelected_ = true;
    pane_->didSelect();
}

void PaneSession::end()
{
    if (std::exchange(isSelected_, false))
        pane_->didUnselect();
    pane_.reset();
}
