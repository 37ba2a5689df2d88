// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLine.h"
#include "Helper/Presets.h"

#include <QCoreApplication>

#include <sys/prctl.h>

namespace {

/// The running helper is found, and ended, by its name: the command line is not it.
constexpr char commandLineProcessName[] = "QNBHelper-cli";

} // namespace

int main(int argc, char **argv)
{
    ::prctl(PR_SET_NAME, commandLineProcessName);
    const Interruption interruption;
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(helperName);
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
    return static_cast<int>(CommandLine(interruption).run(QCoreApplication::arguments()));
}
