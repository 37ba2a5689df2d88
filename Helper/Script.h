// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/ScriptProcess.h"

#include <QByteArray>
#include <QString>
#include <optional>
#include <sys/stat.h>

/// The script of a preset: an executable file, or an application bundle, in the user's folder "Scripts".
///
/// Its content is read once, to be shown and allowed; what runs is that file and no other. The file is
/// started by its path, because scripts find their neighbours by the name they were called by, and an
/// interpreter opens its script by name anyway. Right before, it is looked at again: unless it is the very
/// file that was read, unchanged to the nanosecond since before the reading, it does not run. (The change
/// time that is compared cannot be set by hand.)
class Script
{
public:
    /// A person is to read it, or the program is to be hashed without anybody waiting for it.
    static constexpr qint64 largestContent = qint64(64) * 1024 * 1024;

    /// The script \a name of \a scriptsFolder, which it has to be in after all links have been followed. None
    /// if it is not, if it is not executable, or cannot be read, with the reason for people in \a error.
    static std::optional<Script> find(const QString &name, const QString &scriptsFolder, QString *error);

    /// Of the file that is started, without links.
    const QString &path() const { return path_; }
    /// What is allowed or not: the bytes of the file. Of a bundle a list of what is in it with the digest of
    /// each file, since its program runs what else is there.
    const QByteArray &content() const { return content_; }
    /// Whether content() can be read by people.
    bool isText() const;
    /// content() so that a person sees all of it: one line for each of its lines, and what would move the
    /// cursor, change colours or the order of the characters shown by its number.
    QString shownContent() const;

    /// Runs it for a preset that was created, with these two arguments, in \a target.
    ScriptResult run(const QString &target, const QString &label, const ScriptLimits &limits = {}) const;

private:
    bool isUnchanged() const;

    QString path_;
    /// Empty for a plain file.
    QString bundlePath_;
    QByteArray content_;
    /// As of before content_ was read.
    struct stat status_ = {};
};
