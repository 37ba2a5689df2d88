// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/Preferences.h"
#include "Toolkit/PaneNotice.h"

#include <QCoreApplication>
#include <QDateTime>

/// What the user is told when the stored settings are not those that were saved last.
class QNBStoredNotice
{
    Q_DECLARE_TR_FUNCTIONS(QNBStoredNotice)

public:
    /// The settings cannot be read, for \a reason, and nothing is saved meanwhile. A \a damage, if there is
    /// one, stands in the way. Those of the backup of the time \a shown are shown, or if that is invalid the
    /// default ones; if \a isEdited the user has changed them since.
    static PaneNotice ofUnread(const QString &reason, const std::optional<Preferences::Damage> &damage,
                               const QDateTime &shown, bool isEdited);

    /// The damage is mended. If \a isShown the pane shows what took the place of the damaged file, else what
    /// the user has made since.
    static PaneNotice ofMended(const Preferences::Damage &damage, bool isShown);

private:
    static QString whatHappened(const Preferences::Damage &damage);
};
