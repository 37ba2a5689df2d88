// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Shared/Source/QNBHelperState.h"
#include "Shared/Source/QNBShared.h"

#include <QString>
#include <QStringList>
#include <optional>

class SessionBus;

/// The running helper as other programs find it on the session bus.
namespace HelperService {

inline const QString name = QNBHelperServiceName();
/// That of a launcher in a process of its own, at the same path, where no helper runs.
inline const QString launcherName = name + QStringLiteral(".Launcher");
inline const QString path = QNBHelperObjectPath;
inline const QString interfaceName = name;
/// A label; which of the presets that have it, from 1, or 0 for the only one; the folders. Older command
/// lines leave out the number.
inline const QString createMethod = QStringLiteral("Create");

/// The folders, which may be none; the desktop's leave to bring a window to the front, or an empty text, see
/// ActivationToken.
inline const QString showLauncherMethod = QStringLiteral("ShowLauncher");

/// What an entry of a menu shows, see presetShown().
struct Preset
{
    QString label;
    std::optional<int> position = {};
};

enum class Answer {
    /// It has taken the order, and will tell the user the result; or it shows the launcher.
    Taken,
    /// Nothing happened: there is no bus on which it could be asked.
    NoBus,
    /// Nothing happened.
    NotRunning,
    /// Nothing happened: it knows no such preset, or more than one, or cannot read the presets.
    NotUnderstood,
    /// Nothing happened: it does not take the order now, or the bus does not.
    Refused,
    /// It may or may not have taken the order.
    Failed,
};

/// Asks the helper on \a bus; waits for its answer for a bounded time. If none runs, and the user wants one
/// to, the bus may start one that is installed.
Answer create(SessionBus &bus, const Preset &preset, const QStringList &folders, QString *error);
/// Asks for the launcher, to create a preset in \a folders if there are any: the helper's or, if none
/// runs, one that is open in a process of its own. The bus starts none for it.
Answer showLauncher(SessionBus &bus, const QStringList &folders, const QByteArray &activationToken,
                    QString *error);

} // namespace HelperService
