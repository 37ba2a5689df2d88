// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// A copy of the pane that was built, without the helper and the file managers' plug-in: it starts nothing
/// and offers nothing but what a test adds.
class PaneCopy
{
public:
    /// In \a folder.
    explicit PaneCopy(const QString &folder);

    QString path() const { return path_; }

    /// Adds the helper and the plug-in that were built.
    void addCompanions() const;

    /// Adds the program that stands in for the helper, in a bundle of its own.
    void addHelper() const;
    QString helperPath() const;
    QString helperProgram() const;
    /// The one in the bundle that was built.
    static QString builtHelperProgram();

    /// Adds a bundle that stands in for the file managers' plug-in: its program writes its arguments, a line
    /// each, to the file that the variable QUENBY_PLUG_IN_REPORT names, and knows of one file manager.
    void addContextMenu() const;
    QString contextMenuPath() const;

private:
    QString path_;
};
