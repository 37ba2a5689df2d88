// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ScreenReader.h"

#include <QPoint>
#include <QRect>
#include <QStringList>

#include <chrono>

/// The pane as its user sees it, which needs no knowledge of its code.
class PaneOnScreen
{
public:
    explicit PaneOnScreen(const ScreenReader &reader)
        : reader_(reader)
    {
    }

    /// Waits until the window shows the list and the tree; false if it does not within \a patience.
    bool isThere(std::chrono::milliseconds patience);
    /// The labels of the presets, in their order, without the number behind one that several presets have.
    QStringList presets() const;
    /// The names of the items of the selected preset, from top to bottom.
    QStringList items() const { return names(itemTree_); }
    /// The same with two spaces before the name for each level.
    QStringList tree() const;
    /// The names of the selected rows of either view.
    QStringList selectedPresets() const { return selected(presetList_); }
    QStringList selectedItems() const { return selected(itemTree_); }
    /// Where a row is; empty if it is not shown.
    QRect preset(const QString &label) const { return place(presetList_, label); }
    QRect item(const QString &name) const { return place(itemTree_, name); }
    QRect presetList() const { return presetList_.extents(); }
    QRect itemTree() const { return itemTree_.extents(); }
    /// What the pane's window holds otherwise.
    QRect button(const QString &name) const;
    /// Whether there is such a button, and it does something.
    bool canPress(const QString &name) const;
    bool label(const QString &text) const { return !placeOfLabel(text).isEmpty(); }
    QRect placeOfLabel(const QString &text) const;
    /// The texts of the alert above the pane, its buttons last; empty if there is none.
    QStringList alert() const;

private:
    static QList<Accessible> rows(const Accessible &view);
    static QStringList names(const Accessible &view);
    static QStringList selected(const Accessible &view);
    static QRect place(const Accessible &view, const QString &name);

    const ScreenReader &reader_;
    Accessible program_;
    Accessible presetList_;
    Accessible itemTree_;
};
