// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PaneLauncher.h"

#include "Helper/Presets.h"
#include "Helper/Running/CreationNotices.h"
#include "Platform/Processes/ChildEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace {

const QString programName = QStringLiteral("quenby-preferences");
/// Where it lies as seen from the pane's bundle: beside it, or as both are installed.
const QStringList placesByPane = {QStringLiteral("/../"), QStringLiteral("/" QUENBY_PROGRAMS_FROM_PANE "/")};

QString translated(const char *text)
{
    return QCoreApplication::translate("PaneLauncher", text);
}

bool launch()
{
    const std::optional<Bundle> pane = paneBundle();
    const QStringList arguments = pane ? QStringList{pane->bundlePath()} : QStringList();
    QString program;
    for (const QString &place : placesByPane) {
        const QFileInfo candidate(pane ? pane->bundlePath() + place + programName : QString());
        if (program.isEmpty() && candidate.isFile() && candidate.isExecutable())
            program = QDir::cleanPath(candidate.filePath());
    }
    if (program.isEmpty())
        program = QStandardPaths::findExecutable(programName);
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(ChildEnvironment::variables());
    return !program.isEmpty() && process.startDetached();
}

} // namespace

void PaneLauncher::launchOrTell(CreationNotices &notices)
{
    if (!launch())
        notices.showProblem(translated("Quenby could not be opened"),
                            translated("Its settings program was not found."));
}
