// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/KilledProcess.h"

#include <QProcess>

namespace {

constexpr int timeout = 60000;

} // namespace

bool KilledProcess::isKilledAt(const QString &call, int number, const QString &program,
                               const QStringList &arguments, QProcessEnvironment environment)
{
    // What looks for leaks cannot do so while somebody traces it.
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("strace"),
                  QStringList{QStringLiteral("-f"), QStringLiteral("-qq"), QStringLiteral("-o"),
                              QStringLiteral("/dev/null"), QStringLiteral("-e"),
                              QStringLiteral("trace=%1").arg(call), QStringLiteral("-e"),
                              QStringLiteral("inject=%1:signal=KILL:when=%2").arg(call).arg(number),
                              program} +
                      arguments);
    if (!process.waitForFinished(timeout))
        qFatal("%s", qPrintable(process.errorString()));
    return process.exitStatus() == QProcess::CrashExit;
}
