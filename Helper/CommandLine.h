// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/CommandLineOptions.h"
#include "Helper/Console.h"
#include "Helper/CreatePreset.h"
#include "Helper/Interruption.h"

#include <QJsonArray>
#include <QStringList>

#include <memory>
#include <optional>

class SessionBus;

/// What the program ends with. Of several folders the greatest counts.
enum class ExitCode : int {
    Done = 0,
    /// The arguments make no sense, or the home folder is another user's.
    Usage = 1,
    NoSuchPreset = 2,
    /// The plan cannot be executed; nothing was done.
    Problems = 3,
    /// Everything made was undone.
    Failed = 4,
    /// The structure was made, but its script failed or was not allowed.
    Script = 5,
    NotUndone = 6,
    /// By a signal; what was being made was undone.
    Interrupted = 7,
    /// All was done, but could not be printed.
    NotPrinted = 8,
};

/// The helper without a window.
class CommandLine
{
public:
    explicit CommandLine(const Interruption &interruption);

    /// Does what \a arguments (the first one is the program) ask for.
    ExitCode run(const QStringList &arguments);
    /// After run(): for which folders, if any, the launcher is still to be shown. The caller does that: this
    /// has no window.
    const std::optional<QStringList> &launcherFolders() const { return launcherFolders_; }

private:
    ExitCode perform(const CommandLineOptions &options);
    /// Once for each; not where nobody may read it, because the running helper does the work.
    void tellOfInterruptedCreations();
    ExitCode list(const CommandLineOptions &options);
    ExitCode create(const CommandLineOptions &options);
    ExitCode createHere(const CommandLineOptions &options, const QStringList &folders);
    ExitCode launcher(const CommandLineOptions &options);
    /// By the running helper, or leaves it to the caller of run().
    Result<> showLauncher(const QStringList &folders);
    ExitCode createIn(const CommandLineOptions &options, const QList<CreationRequest> &requests);
    ExitCode dryRun(const CommandLineOptions &options, const QList<CreationRequest> &requests);
    void printCreations(const CommandLineOptions &options, const QList<CreationRequest> &requests,
                        const QJsonArray &folders);
    ExitCode undo(const CommandLineOptions &options);
    /// None if the running helper does not do it.
    std::optional<ExitCode> handOver(const CommandLineOptions &options, const QStringList &folders);
    /// Everything that was told.
    void notify(const QString &title);

    CreationRequest request(const CommandLineOptions &options, const QNBPresetRecordPtr &preset,
                            const QString &folder);
    bool allowScript(const CommandLineOptions &options, const Script &script);
    void tellPlan(const Creation::Plan &plan);
    void tellReport(const CreationReport &report);
    void tell(const QString &message);
    /// Made when it is first needed.
    const std::shared_ptr<SessionBus> &bus();

    const Interruption &interruption_;
    Console console_;
    std::shared_ptr<SessionBus> bus_;
    QStringList told_;
    std::optional<QStringList> launcherFolders_;
};
