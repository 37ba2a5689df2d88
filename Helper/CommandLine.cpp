// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLine.h"

#include "Helper/CommandLineJson.h"
#include "Helper/FolderPath.h"
#include "Helper/HelperService.h"
#include "Helper/Notifications.h"
#include "Helper/Presets.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Desktop/HomeOwner.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <algorithm>
#include <chrono>
#include <memory>

using namespace std::chrono_literals;

namespace {

/// The desktop's program for notifications may have to be started first.
constexpr auto notificationTimeout = 10s;

QString tr(const char *text)
{
    return QCoreApplication::translate("CommandLine", text);
}

QByteArray text(const QJsonDocument &document)
{
    return escapedJson(document.toJson());
}

ExitCode worse(ExitCode one, ExitCode other)
{
    return std::max(one, other);
}

ExitCode codeOf(CreationReport::Status status)
{
    using Status = CreationReport::Status;
    switch (status) {
    case Status::Created:
        return ExitCode::Done;
    case Status::Problems:
        return ExitCode::Problems;
    case Status::Failed:
        return ExitCode::Failed;
    case Status::Cancelled:
        return ExitCode::Interrupted;
    case Status::ScriptNotAllowed:
    case Status::ScriptFailed:
    case Status::ScriptTimedOut:
        break;
    }
    return ExitCode::Script;
}

QStringList shortened(const QStringList &folders)
{
    QStringList paths;
    for (const QString &folder : folders)
        paths.append(FolderPath::shortened(folder));
    return paths;
}

} // namespace

CommandLine::CommandLine(const Interruption &interruption)
    : interruption_(interruption)
{
}

ExitCode CommandLine::run(const QStringList &arguments)
{
    QString error;
    const std::optional<CommandLineOptions> options = CommandLineOptions::parse(arguments, &error);
    if (!options) {
        tell(error);
        tell(tr("Try \"%1 --help\".").arg(helperName));
        return ExitCode::Usage;
    }
    const ExitCode code = perform(*options);
    return console_.finish() ? code : worse(code, ExitCode::NotPrinted);
}

ExitCode CommandLine::perform(const CommandLineOptions &options)
{
    using Command = CommandLineOptions::Command;
    if (options.command == Command::Help) {
        console_.print(CommandLineOptions::help());
        return ExitCode::Done;
    }
    if (options.command == Command::Version) {
        console_.printLine(helperName + u' ' + QCoreApplication::applicationVersion());
        return ExitCode::Done;
    }
    if (const Result<> home = HomeOwner::check(); !home) {
        tell(home.error);
        return ExitCode::Usage;
    }
    if (options.command == Command::Undo)
        return undo(options);
    if (options.command == Command::Launcher)
        return launcher(options);
    return options.command == Command::List ? list(options) : create(options);
}

void CommandLine::tellOfInterruptedCreations()
{
    const QStringList news = newsOfInterruptedCreations();
    for (const QString &line : news)
        tell(line);
}

ExitCode CommandLine::list(const CommandLineOptions &options)
{
    tellOfInterruptedCreations();
    const Result<QNBSettings> settings = readSettings();
    if (!settings) {
        tell(settings.error);
        return ExitCode::NoSuchPreset;
    }
    if (options.isJson) {
        console_.print(text(QJsonDocument(CommandLineJson::presets(settings->presets))));
    } else {
        for (const QNBPresetRecordPtr &preset : settings->presets)
            console_.printLine(preset->label());
    }
    return ExitCode::Done;
}

ExitCode CommandLine::undo(const CommandLineOptions &options)
{
    const UndoReport report = undoLastCreation();
    tell(report.message);
    if (options.isJson)
        console_.print(text(QJsonDocument(CommandLineJson::undo(report))));
    const bool isUndone = report.status == UndoReport::Status::Undone;
    if (options.notify)
        notify(isUndone ? tr("The last creation was undone") : tr("The last creation was not undone"));
    return isUndone ? ExitCode::Done : ExitCode::NotUndone;
}

ExitCode CommandLine::create(const CommandLineOptions &options)
{
    const QStringList folders = shortened(options.folders);
    const std::optional<ExitCode> handedOver = handOver(options, folders);
    if (handedOver == ExitCode::Done)
        return ExitCode::Done;
    if (!handedOver)
        tellOfInterruptedCreations();
    const ExitCode code = handedOver ? *handedOver : createHere(options, folders);
    if (!options.notify)
        return code;
    if (code == ExitCode::NoSuchPreset) {
        // Who chose it has an old list in view.
        if (const Result<> shown = showLauncher(folders); !shown)
            tell(shown.error);
    }
    const bool isCreated = code == ExitCode::Done || code == ExitCode::Script;
    notify(isCreated                        ? tr("\"%1\" was created").arg(options.preset)
           : handedOver == ExitCode::Failed ? tr("\"%1\" may not have been created").arg(options.preset)
                                            : tr("\"%1\" was not created").arg(options.preset));
    return code;
}

ExitCode CommandLine::launcher(const CommandLineOptions &options)
{
    const Result<> shown = showLauncher(shortened(options.folders));
    if (shown)
        return ExitCode::Done;
    tell(shown.error);
    if (options.notify)
        notify(tr("The presets were not shown"));
    return ExitCode::Failed;
}

Result<> CommandLine::showLauncher(const QStringList &folders)
{
    using HelperService::Answer;
    QString error;
    switch (HelperService::showLauncher(*bus(), folders, ActivationToken::ofThisProcess(), &error)) {
    case Answer::Taken:
        return {};
    case Answer::NoBus:
    case Answer::NotRunning:
        if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
            return Result<>::failure(tr("There is no display on which the presets could be shown."));
        launcherFolders_ = folders;
        return {};
    case Answer::NotUnderstood:
    case Answer::Refused:
    case Answer::Failed:
        break;
    }
    return Result<>::failure(error);
}

ExitCode CommandLine::createHere(const CommandLineOptions &options, const QStringList &folders)
{
    const Result<QNBSettings> settings = readSettings();
    QString error = settings.error;
    QNBPresetRecordPtr preset;
    if (settings)
        preset = options.notify || options.position
                     ? presetShown(settings->presets, options.preset, options.position, &error)
                     : presetNamed(settings->presets, options.preset, &error);
    if (!preset) {
        tell(error);
        return ExitCode::NoSuchPreset;
    }
    QList<CreationRequest> requests;
    const auto step = std::make_shared<UndoStep>(folders.size());
    for (const QString &folder : folders) {
        requests.append(request(options, preset, folder));
        requests.last().step = step;
    }
    return options.isDryRun ? dryRun(options, requests) : createIn(options, requests);
}

CreationRequest CommandLine::request(const CommandLineOptions &options, const QNBPresetRecordPtr &preset,
                                     const QString &folder)
{
    CreationRequest request;
    request.preset = preset;
    request.folder = folder;
    request.onConflict = options.onConflict;
    request.runScript = options.runScript;
    if (options.allowScript || console_.canAsk())
        request.allowScript = [this, options](const Script &script) { return allowScript(options, script); };
    if (options.scriptTimeLimit)
        request.scriptLimits.duration = std::chrono::seconds(*options.scriptTimeLimit);
    request.scriptLimits.interruption = interruption_.descriptor();
    return request;
}

void CommandLine::printCreations(const CommandLineOptions &options, const QList<CreationRequest> &requests,
                                 const QJsonArray &folders)
{
    const QString label = requests.constFirst().preset->label();
    console_.print(text(QJsonDocument(CommandLineJson::creations(label, options.isDryRun, folders))));
}

ExitCode CommandLine::dryRun(const CommandLineOptions &options, const QList<CreationRequest> &requests)
{
    ExitCode code = ExitCode::Done;
    QJsonArray folders;
    for (const CreationRequest &request : requests) {
        const Creation::Plan plan = planCreation(request);
        if (!plan.canBeExecuted())
            code = worse(code, ExitCode::Problems);
        tellPlan(plan);
        if (options.isJson) {
            folders.append(CommandLineJson::plan(plan));
            continue;
        }
        for (const QString &line : plan.lines())
            console_.printLine(line);
    }
    if (options.isJson)
        printCreations(options, requests, folders);
    return code;
}

ExitCode CommandLine::createIn(const CommandLineOptions &options, const QList<CreationRequest> &requests)
{
    ExitCode code = ExitCode::Done;
    QJsonArray folders;
    for (const CreationRequest &request : requests) {
        if (interruption_.isRequested())
            break;
        const CreationReport report =
            createPreset(request, [this](qsizetype, qsizetype) { return !interruption_.isRequested(); });
        code = worse(code, codeOf(report.status));
        tellReport(report);
        if (options.isJson)
            folders.append(CommandLineJson::report(report));
        else
            console_.print(report.script.output);
    }
    if (const QString problem = requests.constFirst().step->endAll(); !problem.isEmpty())
        tell(tr("What was created cannot be undone later: %1").arg(problem));
    if (options.isJson)
        printCreations(options, requests, folders);
    return interruption_.isRequested() ? worse(code, ExitCode::Interrupted) : code;
}

bool CommandLine::allowScript(const CommandLineOptions &options, const Script &script)
{
    if (options.allowScript)
        return true;
    // With a mark before each line: none is taken for this program's own words.
    const QStringList lines = script.shownContent().split(u'\n');
    QString content;
    for (const QString &line : lines)
        content += QStringLiteral("| ") + line + u'\n';
    return console_.ask(
        tr("The preset wants to run the script %1, which says:").arg(lineText(script.path())) +
            QStringLiteral("\n\n") + content + u'\n',
        tr("Allow it, now and from now on?"));
}

void CommandLine::tellPlan(const Creation::Plan &plan)
{
    for (const Creation::Problem &problem : plan.problems())
        tell(problem.path.isEmpty() ? problem.reason : problem.path + QStringLiteral(": ") + problem.reason);
    for (const Creation::Conflict &conflict : plan.conflicts())
        tell(conflict.newName.isEmpty()
                 ? tr("%1: there is something of that name already").arg(conflict.path)
                 : tr("%1: there is something of that name already, the new one is called \"%2\"")
                       .arg(conflict.path, conflict.newName));
}

void CommandLine::tellReport(const CreationReport &report)
{
    tellPlan(report.plan);
    const QString folder = report.plan.target();
    using Status = CreationReport::Status;
    if (report.status == Status::Problems)
        tell(tr("Nothing was created in %1").arg(folder));
    else if (report.isCreated())
        tell(tr("Created \"%1\" in %2").arg(report.label, folder));
    else if (report.status == Status::Cancelled)
        tell(tr("Interrupted; everything made in %1 was undone").arg(folder));
    else
        tell(tr("Nothing was created in %1: %2").arg(folder, report.message));
    if (report.isCreated() && report.status != Status::Created)
        tell(report.message);
    if (!report.warning.isEmpty())
        tell(report.warning);
    if (report.status == Status::ScriptNotAllowed)
        tell(tr("Look at it, and then allow it by --allow-script."));
    if (report.script.omittedOutput > 0)
        tell(tr("%1 more bytes of the script's output are left out").arg(report.script.omittedOutput));
}

std::optional<ExitCode> CommandLine::handOver(const CommandLineOptions &options, const QStringList &folders)
{
    // The running helper has its own ways: what is asked for especially is done here.
    const bool isOrdinary = !options.isDryRun && !options.isJson && options.runScript &&
                            !options.allowScript && !options.scriptTimeLimit &&
                            options.onConflict == Creation::OnConflict::UniqueName;
    if (!options.notify || !isOrdinary)
        return std::nullopt;
    QString error;
    switch (HelperService::create(*bus(), {options.preset, options.position}, folders, &error)) {
    case HelperService::Answer::Taken:
        return ExitCode::Done;
    case HelperService::Answer::NoBus:
    case HelperService::Answer::NotRunning:
        return std::nullopt;
    case HelperService::Answer::NotUnderstood:
        tell(error);
        return ExitCode::NoSuchPreset;
    case HelperService::Answer::Refused:
        tell(tr("The running helper did not do it: %1").arg(error));
        return ExitCode::Failed;
    case HelperService::Answer::Failed:
        break;
    }
    tell(tr("Whether the running helper has done it is not known: %1").arg(error));
    return ExitCode::Failed;
}

void CommandLine::notify(const QString &title)
{
    Notifications notifications(bus());
    notifications.show({title, told_.join(u'\n')});
    notifications.flush(notificationTimeout);
}

const std::shared_ptr<SessionBus> &CommandLine::bus()
{
    if (!bus_)
        bus_ = std::make_shared<SessionBus>();
    return bus_;
}

void CommandLine::tell(const QString &message)
{
    told_.append(lineText(message));
    console_.tell(message);
}
