// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// The launcher where no helper runs, see LauncherSession, for \a folders if there are any. Returns what the
/// process ends with. What runHelper() wants to be there has to be there.
int runLauncherAlone(const QStringList &folders);
