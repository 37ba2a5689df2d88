// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLine.h"
#include "Helper/Presets.h"
#include "Helper/Running/RunningCode.h"
#include "Helper/StandardStreams.h"
#include "Platform/HomeOwner.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <cstdio>
#include <sys/prctl.h>

namespace {

/// The running helper is found, and ended, by its name: the command line is not it.
constexpr char commandLineProcessName[] = "QNBHelper-cli";
/// What the dynamic loader returns, too, if a library of a program is missing.
constexpr int codeIsMissing = 127;

int runInBackground(int &argc, char **argv)
{
    if (const Result<> home = HomeOwner::check(); !home) {
        std::fprintf(stderr, "QNBHelper: %s\n", qPrintable(lineText(home.error)));
        return static_cast<int>(ExitCode::Usage);
    }
    const QString folder = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path();
    QLibrary code(folder + u'/' + QLatin1String(RunningCode::path));
    // Its objects outlive main().
    code.setLoadHints(QLibrary::PreventUnloadHint);
    if (auto *const run = reinterpret_cast<RunningCode::Run *>(code.resolve(RunningCode::runName)))
        return run(argc, argv);
    std::fprintf(stderr, "QNBHelper: %s\n", qPrintable(lineText(code.errorString())));
    return codeIsMissing;
}

} // namespace

int main(int argc, char **argv)
{
    StandardStreams::occupyClosed();
    StandardStreams::outliveReaders();
    QCoreApplication::setApplicationName(helperName);
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
    if (argc <= 1)
        return runInBackground(argc, argv);
    ::prctl(PR_SET_NAME, commandLineProcessName);
    const Interruption interruption;
    const QCoreApplication application(argc, argv);
    return static_cast<int>(CommandLine(interruption).run(QCoreApplication::arguments()));
}
