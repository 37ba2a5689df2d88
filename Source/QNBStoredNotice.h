// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences.h"
#include "Toolkit/PaneNotice.h"

#include <QCoreApplication>

/// What the user is told when the stored settings are not those that were saved last.
class QNBStoredNotice
{
    Q_DECLARE_TR_FUNCTIONS(QNBStoredNotice)

public:
    /// The settings cannot be read, for \a reason, and nothing is saved meanwhile. With a \a damage those of
    /// its backup are shown, else the default ones.
    static PaneNotice ofUnread(const QString &reason, const std::optional<Preferences::Damage> &damage);

    /// The damage is mended. If \a isShown the pane shows what took the place of the damaged file, else what
    /// the user has made since.
    static PaneNotice ofMended(const Preferences::Damage &damage, bool isShown);

private:
    static QString whatHappened(const Preferences::Damage &damage);
};
