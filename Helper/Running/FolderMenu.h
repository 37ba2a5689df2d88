// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QMenu>
#include <QStringList>

#include <functional>

/// The menu of presets for folders that are known already: each entry creates its preset there.
class FolderMenu
{
public:
    struct Handlers
    {
        /// The preset's place in the list that is shown, and its label.
        std::function<void(qsizetype place, const QString &label)> create;
        std::function<void()> openPane;
    };

    FolderMenu(const QStringList &labels, const QStringList &folders, const Handlers &handlers);

    QMenu &menu() { return menu_; }

private:
    QMenu menu_;
};
