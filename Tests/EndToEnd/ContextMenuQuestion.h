// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// The alert that offers the plug-in for file managers to who has none: its texts and its buttons.
inline const QStringList contextMenuQuestion = {
    QStringLiteral("Install Finder Contextual Menu?"),
    QStringLiteral(
        "Quenby can install a Finder Contextual Menu so you can access presets from within Finder. "
        "Installing this will require that Finder be restarted. Would you like to install the "
        "contextual menu?"),
    QStringLiteral("Install and Restart Finder"),
    QStringLiteral("Don't Install"),
};
