// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

/// A question for files or for a folder, put by the desktop's own dialog.
struct FilePanel
{
    enum class Kind {
        /// Any number of existing files.
        Files,
        /// One existing folder, or a new one that the user makes on the way.
        Folder,
        /// One file to be written, which need not exist; the user has agreed to replace one that does.
        NewFile,
    };

    Kind kind = Kind::Files;
    QString title;
    /// What the button says that ends the choice.
    QString acceptButton;
    /// Where the choice starts; of a new file, the path that is suggested.
    QString folder;
    /// As in "Texts (*.txt)"; the first one counts until the user takes another.
    QStringList nameFilters = {};

    /// Asks, in front of the window of \a parent and of nothing else, and waits. Paths; none if the user
    /// cancels, or that window goes meanwhile.
    QStringList run(QWidget *parent) const;

    /// Whoever puts such questions holds one of these, so that there can be answers without windows.
    using Runner = std::function<QStringList(QWidget *parent, const FilePanel &panel)>;
    /// The one that asks the user.
    static Runner runner();
};
