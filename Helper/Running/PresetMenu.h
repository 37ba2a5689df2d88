// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/MenuText.h"

#include <QMenu>
#include <QStringList>

#include <functional>
#include <vector>

/// The menu of presets: each leads to the folders that it can be created in.
class PresetMenu
{
public:
    struct Handlers
    {
        /// The preset's place in the list, and the folder.
        std::function<void(qsizetype preset, const QString &folder)> create;
        /// The same without a folder: the user wants to choose one.
        std::function<void(qsizetype preset)> chooseFolder;
        std::function<void()> undo;
        std::function<void()> openPane;
        std::function<void()> quit;
        /// Before it is shown: the time to say what it holds.
        std::function<void(PresetMenu &menu)> aboutToShow;
    };

    PresetMenu(MenuText::Reader reader, Handlers handlers);
    ~PresetMenu();
    PresetMenu(const PresetMenu &) = delete;
    PresetMenu &operator=(const PresetMenu &) = delete;

    /// What it shows; without \a labels it says that there are no presets or, if they are not \a areKnown,
    /// that they cannot be read. Nothing is touched that is as it should be: whoever shows the menu elsewhere
    /// keeps to the entries that it knows.
    void setContent(const QStringList &labels, const QStringList &folders, bool areKnown);
    void setCanUndo(bool canUndo) { undo_->setEnabled(canUndo); }

    QMenu &menu() { return menu_; }

private:
    void rebuildPresets();
    void fill(QMenu &menu, qsizetype preset);
    QString text(const QString &name) const { return MenuText::forName(name, reader_); }

    const MenuText::Reader reader_;
    const Handlers handlers_;
    QMenu menu_;
    QAction *separator_;
    QAction *undo_;
    QStringList labels_;
    QStringList folders_;
    bool areKnown_ = true;
    /// In front of the separator: one for each preset, or one that says that there is none.
    std::vector<QAction *> entries_;
};
