// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/HelperFinder.h"
#include "ContextMenu/Registration.h"
#include "Platform/Desktop/HomeOwner.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int wrongUse = 2;

constexpr char usage[] = R"(Usage: QNBContextMenu register [HELPER]
       QNBContextMenu refresh [HELPER]
       QNBContextMenu unregister
       QNBContextMenu list
       QNBContextMenu --help | --version

Puts a submenu "Quenby" of the presets into the context menus of the file
managers that are there: Dolphin, Nautilus, Nemo, Thunar, PCManFM-Qt and Caja.
Choosing a preset has the helper create it in the folder; the last entry has it
show the presets of now, to be created there.

Commands:
  register    Writes the entries, for every file manager that is installed, or
              has kept settings of this user.
  refresh     Brings the entries that were registered up to the presets of now,
              and writes those that are missing, also for a file manager that
              was installed later. Does nothing if nothing is registered.
  unregister  Removes exactly what was written.
  list        Prints a line for each file manager that is there or has entries:
              its name, a tab, and "yes" if it has them, else "no".

HELPER is the path of the executable QNBHelper. Without it the helper is looked
for: beside this plug-in, among the login items, in the folders of settings
panes, in PATH. If it is not found, "register" notes what is
there, and the helper has the entries written when it starts.

A file of ours that was changed is left alone. What is not in a menu, and why, is
printed. In Thunar's file, which holds others' actions too, only those are touched
whose identifier begins with "quenby-".

Thunar and PCManFM-Qt read their entries once, and show what has changed after
all their windows, and what of them runs in the background, have ended:
"thunar -q" does that, at the next login it has happened anyway. Until then an
entry creates what it says, or nothing. The others see it at once.

Files:
  $XDG_DATA_HOME/kio/servicemenus/org.quenby.Quenby.desktop
  $XDG_DATA_HOME/nautilus/scripts/Quenby/
  $XDG_DATA_HOME/nemo/scripts/Quenby/
  $XDG_CONFIG_HOME/Thunar/uca.xml
  $XDG_DATA_HOME/file-manager/actions/quenby*.desktop
  $XDG_CONFIG_HOME/caja/scripts/Quenby/
  $XDG_STATE_HOME/Quenby/ContextMenu.plist   what was written

Exit status: 0 if all was done, 1 if something could not be, or if the home
folder belongs to another user, 2 for wrong use.
)";

/// The helper that was named, else the one that is found.
QByteArray helper(const QStringList &arguments)
{
    return arguments.size() > 1 ? QFile::encodeName(QDir::cleanPath(QDir().absoluteFilePath(arguments.at(1))))
                                : HelperFinder::find(QCoreApplication::applicationFilePath());
}

Result<QStringList> perform(const QStringList &arguments)
{
    if (const Result<> home = HomeOwner::check(); !home)
        return Result<QStringList>::failure(home.error);
    if (arguments.constFirst() == u"register")
        return Registration::registerWith(helper(arguments));
    if (arguments.constFirst() == u"refresh")
        return Registration::refresh(helper(arguments));
    if (arguments.constFirst() == u"unregister")
        return Registration::unregister();
    return Registration::list();
}

/// Prints what came of it, and gives the exit status.
int print(const Result<QStringList> &lines)
{
    if (!lines) {
        std::fputs(qPrintable(linesText(QStringLiteral("QNBContextMenu: %1\n").arg(lines.error))), stderr);
        return EXIT_FAILURE;
    }
    for (const QString &line : *lines)
        std::puts(qPrintable(linesText(line)));
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString command = arguments.value(0);
    const bool mayNameHelper = command == u"register" || command == u"refresh";
    if (arguments.isEmpty() || arguments.size() > (mayNameHelper ? 2 : 1)) {
        std::fputs(usage, stderr);
        return wrongUse;
    }
    if (mayNameHelper || command == u"unregister" || command == u"list")
        return print(perform(arguments));
    if (command == u"--help" || command == u"-h") {
        std::fputs(usage, stdout);
        return EXIT_SUCCESS;
    }
    if (command == u"--version") {
        std::puts("QNBContextMenu " QUENBY_VERSION);
        return EXIT_SUCCESS;
    }
    std::fputs(usage, stderr);
    return wrongUse;
}
