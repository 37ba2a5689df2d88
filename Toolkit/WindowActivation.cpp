// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/WindowActivation.h"

#include "Platform/ActivationToken.h"

#include <QWidget>

void WindowActivation::bringToFront(QWidget &window, const QByteArray &token)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    // The only way to hand the platform plug-in a token: depending on its version it takes it with the first
    // of these requests or with the last.
    if (!token.isEmpty())
        qputenv(ActivationToken::variable, token);
    window.show();
    window.raise();
    window.activateWindow();
    qunsetenv(ActivationToken::variable);
}
