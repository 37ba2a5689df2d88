// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// What runs of a script: a copy that was made of the very bytes that were looked at, alone in a new folder
/// that is closed to other users. Whoever may write to the folder of scripts, and be it between the look and
/// the start, changes nothing of it. It goes with its owner. Nothing protects it from the user's own
/// processes, which may change whatever the user may.
class ScriptCopy
{
public:
    /// Of a file with this \a content, called \a name.
    static Result<ScriptCopy> ofFile(const QByteArray &content, const QString &name);

    /// Of everything in the folder \a bundle, unless what was copied is not described by \a description.
    static Result<ScriptCopy> ofBundle(const QString &bundle, const QByteArray &description);

    /// One line for each file and link in the folder \a bundle, sorted: digest, whether it can be executed,
    /// path. It stands for the bundle: each link in it leads to something else in it.
    static Result<QByteArray> descriptionOf(const QString &bundle);

    /// Of the copy, without links: the file, or the folder.
    const QString &path() const { return path_; }

private:
    ScriptCopy(std::unique_ptr<QTemporaryDir> folder, const QString &name);
    static Result<ScriptCopy> empty(const QString &name);

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};
