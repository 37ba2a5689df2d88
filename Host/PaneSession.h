// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/PreferencePane.h"

#include <memory>

/// The life of one pane, from the loading of its view to its end. Makes the calls of PreferencePane's
/// contract in their order, whatever the window does.
class PaneSession
{
public:
    /// Loads the view and tells the pane; a pane without a view gives way to a page that says so.
    explicit PaneSession(std::unique_ptr<PreferencePane> pane);
    /// Ends the pane if that has not been done, and then its view.
    ~PaneSession();
    PaneSession(const PaneSession &) = delete;
    PaneSession &operator=(const PaneSession &) = delete;

    /// Never null. Belongs to the session, whoever shows it.
    QWidget *view() const { return view_; }
    /// The view is on screen now; does nothing if it was before.
    void select();
    /// Leaves the pane if it is selected, and ends it; the view stays until the session goes.
    void end();

private:
    std::unique_ptr<PreferencePane> pane_;
    QWidget *view_ = nullptr;
    bool isSelected_ = false;
};
