// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>

/// A file of a script, opened once: what is told of it belongs together, whatever becomes of its name.
struct ScriptFile
{
    /// A person is to read it, or the program is to be hashed without anybody waiting for it.
    static constexpr qint64 largest = qint64(64) * 1024 * 1024;

    QByteArray content;
    /// By this user.
    bool isExecutable = false;

    /// The regular file at \a path, which is no link. Fails while somebody writes to it.
    static Result<ScriptFile> read(const QString &path);
};
