// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QCache>
#include <QColor>
#include <QIcon>
#include <QString>

/// The icons that the desktop shows for files and folders: those of its icon theme, or our own where it has
/// no theme. No answer is ever null, and each serves any size and scale.
///
/// What was found is kept, within bounds, until the desktop changes its theme; equal questions get the same
/// icon.
class WorkspaceIcons
{
public:
    /// For files with \a extension, without the dot and in any case; the generic document icon where that
    /// says nothing.
    QIcon iconForFileType(const QString &extension);

    /// For what is at \a path now: the folder icon for a folder, the application icon for an application
    /// bundle, for anything else that of its name's extension, unless a program is executable and has none.
    /// The generic document icon for the empty path.
    QIcon iconForFile(const QString &path);

    /// For every folder, whatever its name.
    QIcon folderIcon();

    /// \a icon with its opaque pixels tinted: half \a color, half as they were.
    QIcon tintedIcon(const QIcon &icon, const QColor &color);

private:
    /// What was kept for another theme is forgotten.
    void followDesktop();
    const QIcon &documentIcon();

    QCache<QString, QIcon> types_{maximumTypes};
    QCache<std::pair<qint64, QRgb>, QIcon> tinted_{maximumTinted};
    QIcon folder_;
    QIcon document_;
    QString theme_;

    /// More kinds of files than a person has; a preset may hold a hundred thousand extensions.
    static constexpr qsizetype maximumTypes = 1024;
    /// The seven colours for each of many kinds.
    static constexpr qsizetype maximumTinted = 1024;
};
