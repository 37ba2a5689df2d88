// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The measure for the idle helper: the least program that shows an icon with a menu in the tray.

#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"), &application, &QApplication::quit);
    QSystemTrayIcon icon(QIcon::fromTheme(QStringLiteral("folder")));
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}
