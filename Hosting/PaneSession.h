// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/NoticeStrip.h"

#include <memory>

/// The life of one pane, from the loading of its view to its end. Makes the calls of PreferencePane's
/// contract in their order, whatever the window does.
class PaneSession
{
public:
    /// Loads the view and tells the pane; a pane without a view gives way to a page that says so.
    explicit PaneSession(std::unique_ptr<PreferencePane> pane);
    /// Ends the pane if that has not been done, and then its view and the strip.
    ~PaneSession();
    PaneSession(const PaneSession &) = delete;
    PaneSession &operator=(const PaneSession &) = delete;

    /// Never null. Belongs to the session, whoever shows it.
    QWidget *view() const { return view_; }
    /// What the pane says of itself, for the place above its view. Belongs to the session too.
    NoticeStrip &strip() const { return *strip_; }
    /// Whether a page stands in for the pane, which says why it cannot be shown.
    bool isErrorPage() const;
    /// The view is on screen now; does nothing if it was before.
    void select();
    /// Leaves the pane, which saves, if it is selected; if it was left and could not save, has it try again.
    /// What became of the last save; success if there was none.
    Result<> unselect();
    /// Has the pane save, unless it has ended. What became of the last save.
    Result<> save();
    /// Has the pane write to \a path what it would save; success when the pane has ended.
    Result<> saveCopy(const QString &path);
    /// Has the pane take in these files, unless it has ended.
    void openFiles(const QStringList &paths);
    /// The user leaves the pane, which is not selected and could not save, without saving.
    void giveUpSaving() { isGivenUp_ = true; }
    /// Leaves the pane, and ends it; the view stays until the session goes. What became of the last save,
    /// which is tried once more if it failed and was not given up.
    Result<> end();

private:
    NoticeStrip *const strip_;
    std::unique_ptr<PreferencePane> pane_;
    QWidget *view_ = nullptr;
    bool isSelected_ = false;
    bool isGivenUp_ = false;
    Result<> lastSave_;
};
