// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>

#include <chrono>

/// The plug-in for the file managers of this desktop.
namespace FileManagers {

/// How long a plug-in may take for what it is asked to do.
inline constexpr std::chrono::milliseconds answerTimeout{10000};

/// What a plug-in wrote to its standard output, or why it could not do what it was asked, in its own words.
using Answered = std::function<void(const Result<QString> &answer)>;

/// Runs the executable of the bundle \a plugin with the argument \a command. \a answered is called once: from
/// the event loop when that has ended, or was ended because it took too long, or at once if it could not be
/// run. Whatever fails is in the log too. Nobody waits for it.
///
/// No file manager is told of what the plug-in writes. Most of them see it at once; those that read it only
/// when they start could be made to by quitting them, with all their windows and whatever goes on in these.
void ask(const QString &plugin, const QByteArray &command, const Answered &answered,
         std::chrono::milliseconds timeout = answerTimeout);

} // namespace FileManagers
