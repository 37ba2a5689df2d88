// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/PreferencePane.h"

#include <QString>

/// Stands in for a pane that cannot be shown: a page that says why.
class ErrorPane : public PreferencePane
{
public:
    /// \a reason is a sentence or two for the user.
    explicit ErrorPane(QString reason);

    void setListener(PreferencePaneListener *) override {}
    QWidget *loadMainView() override;
    QWidget *mainView() const override { return view_; }
    void mainViewDidLoad() override {}
    void didSelect() override {}
    Result<> didUnselect() override { return {}; }
    Result<> save() override { return {}; }
    Result<> saveCopy(const QString &) override { return {}; }

private:
    const QString reason_;
    QWidget *view_ = nullptr;
};
