// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/WindowActivation.h"

#include "Platform/Desktop/ActivationToken.h"
#include "Toolkit/WindowManager.h"

#include <QGuiApplication>
#include <QWidget>

#include <cstdint>

namespace {

/// How the library calls its windows there.
const QString x11Platform = QStringLiteral("xcb");

} // namespace

void WindowActivation::bringToFront(QWidget &window, const QByteArray &token)
{
    const bool isShown = window.isVisible();
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    // The only way to hand the platform plug-in a token: depending on its version it takes it with the first
    // of these requests or with the last.
    if (!token.isEmpty())
        qputenv(ActivationToken::variable, token);
    window.show();
    window.raise();
    window.activateWindow();
    qunsetenv(ActivationToken::variable);
    // What the library has asked for counts as the program's own wish, and the user may have been elsewhere
    // since. New windows get the keyboard all the same.
    if (isShown && QGuiApplication::platformName() == x11Platform)
        WindowManager::activateWindow(std::uint32_t(window.winId()));
}
