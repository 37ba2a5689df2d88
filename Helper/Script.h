// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/ScriptProcess.h"
#include "Platform/Result.h"

#include <QByteArray>
#include <QString>

class ScriptCopy;

/// The script of a preset: an executable file, or an application bundle, in the user's folder "Scripts", or
/// where a link of the user's own in that folder leads. What runs of a bundle is Bundle::programOf() it.
///
/// Its content is read once, to be shown and allowed. What runs is a copy of just that content, whatever has
/// become of the file by then; of a bundle, which is not kept in memory, it is one whose content is the same,
/// or none runs. So a script finds nothing beside it: one that needs other files is a bundle with them.
class Script
{
public:
    /// The script \a name of \a scriptsFolder, found as Creation::SupportFile finds it. Fails, with a reason
    /// for people, if it is not there, if it is not executable or cannot be read, and if its first line names
    /// an interpreter by a relative path: that would be looked for in the target, which a stranger may have
    /// filled.
    static Result<Script> find(const QString &name, const QString &scriptsFolder);

    /// Of the file that was read, or of the program in the bundle, without links.
    const QString &path() const { return path_; }
    /// What is allowed or not: the bytes of the file. Of a bundle a list of what is in it with the digest of
    /// each file, since its program runs what else is there.
    const QByteArray &content() const { return content_; }
    /// Whether content() can be read by people.
    bool isText() const;
    /// content() so that a person sees every character of it, see linesText(); of a program, that it is one.
    QString shownContent() const;

    /// Runs it for a preset that was created, with these two arguments, in \a target.
    ScriptResult run(const QString &target, const QString &label, const ScriptLimits &limits = {}) const;

private:
    Result<ScriptCopy> copy() const;

    QString path_;
    /// Empty for a plain file.
    QString bundlePath_;
    QByteArray content_;
};
