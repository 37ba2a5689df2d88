// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLine.h"
#include "Helper/Presets.h"
#include "Helper/Running/RunningCode.h"
#include "Helper/StandardStreams.h"
#include "Platform/Desktop/HomeOwner.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <sys/prctl.h>

namespace {

/// The running helper is found, and ended, by its name: the command line is not it.
constexpr char commandLineProcessName[] = "QNBHelper-cli";
/// What the dynamic loader returns, too, if a library of a program is missing.
constexpr int codeIsMissing = 127;

/// The function of this name in the code that is loaded when it is needed; null, and told, if it is missing.
QFunctionPointer loaded(const char *name)
{
    const QString folder = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path();
    QLibrary code(folder + u'/' + QLatin1String(RunningCode::path));
    // Its objects outlive main().
    code.setLoadHints(QLibrary::PreventUnloadHint);
    const QFunctionPointer function = code.resolve(name);
    if (!function)
        std::fprintf(stderr, "QNBHelper: %s\n", qPrintable(lineText(code.errorString())));
    return function;
}

int runInBackground(int &argc, char **argv)
{
    if (const Result<> home = HomeOwner::check(); !home) {
        std::fprintf(stderr, "QNBHelper: %s\n", qPrintable(lineText(home.error)));
        return static_cast<int>(ExitCode::Usage);
    }
    auto *const run = reinterpret_cast<RunningCode::Run *>(loaded(RunningCode::runName));
    return run ? run(argc, argv) : codeIsMissing;
}

int runLauncher(char *program, const QStringList &folders)
{
    auto *const run = reinterpret_cast<RunningCode::RunLauncher *>(loaded(RunningCode::runLauncherName));
    return run ? run(program, folders) : codeIsMissing;
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
    int code = 0;
    std::optional<QStringList> launcherFolders;
    {
        const QCoreApplication application(argc, argv);
        CommandLine commandLine(interruption);
        code = static_cast<int>(commandLine.run(QCoreApplication::arguments()));
        launcherFolders = commandLine.launcherFolders();
    }
    if (launcherFolders && interruption.isRequested())
        return static_cast<int>(ExitCode::Interrupted);
    return launcherFolders ? std::max(code, runLauncher(argv[0], *launcherFolders)) : code;
}
