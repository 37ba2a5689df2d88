// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CreatePreset.h"

#include "Helper/FolderPath.h"
#include "Helper/History.h"
#include "Helper/Presets.h"
#include "Helper/ScriptApprovals.h"
#include "Helper/ScriptChanges.h"
#include "Platform/LineText.h"
#include "Shared/Source/QNBShared.h"
#include "Source/QNBFolderMenu.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QUuid>

namespace {

Q_LOGGING_CATEGORY(lcCreate, "quenby.helper.create")

using Status = CreationReport::Status;

QString tr(const char *text)
{
    return QCoreApplication::translate("CreatePreset", text);
}

QString withPath(const QString &path, const QString &text)
{
    return path.isEmpty() ? text : path + QStringLiteral(": ") + text;
}

/// The first of what stands in the way, and how much more there is.
QString obstacles(const Creation::Plan &plan)
{
    const QList<Creation::Problem> &problems = plan.problems();
    QString first;
    qsizetype count = problems.size();
    if (count > 0) {
        first = withPath(problems.first().path, problems.first().reason);
    } else if (!plan.conflicts().isEmpty()) {
        first = withPath(plan.conflicts().first().path, tr("there is something of that name already"));
        count = plan.conflicts().size();
    }
    return count > 1 ? tr("%1 (and %2 more)").arg(first, QString::number(count - 1)) : first;
}

void forget(const History &history)
{
    if (const Result<> forgotten = history.forget(); !forgotten)
        qCWarning(lcCreate) << "a creation that cannot be undone is remembered:" << forgotten.error;
}

void remember(const CreationReport &report)
{
    const History history;
    QString error;
    const std::optional<FileLock> lock = history.lock(&error);
    const Result<> stored =
        lock ? history.store({report.id, report.label, report.record}) : Result<>::failure(error);
    if (stored)
        return;
    qCWarning(lcCreate) << "the creation cannot be undone:" << stored.error;
    // Nor is the one before taken for the last one.
    if (lock)
        forget(history);
}

/// The same of a creation that has changed since, unless it was undone or another one followed.
void rememberChanges(const CreationReport &report)
{
    const History history;
    QString error;
    const std::optional<FileLock> lock = history.lock(&error);
    const std::optional<History::Creation> last = lock ? history.read(&error) : std::nullopt;
    Result<> stored = error.isEmpty() ? Result<>() : Result<>::failure(error);
    if (last && last->id == report.id && !last->isBeingUndone)
        stored = history.store({report.id, report.label, report.record});
    if (!stored)
        qCWarning(lcCreate) << "what the script has changed cannot be undone:" << stored.error;
}

QString scriptsFolder()
{
    return QDir(QNBApplicationSupportPath()).filePath(QNBFolderMenu::scriptsFolder);
}

void runScript(const CreationRequest &request, const QString &name, CreationReport &report)
{
    QString error;
    const std::optional<Script> script = Script::find(name, scriptsFolder(), &error);
    if (!script) {
        report.status = Status::ScriptFailed;
        report.script.outcome = ScriptResult::Outcome::CouldNotStart;
        report.script.error = error;
        report.message = error;
        return;
    }
    const ScriptApprovals approvals;
    if (!approvals.isAllowed(script->content())) {
        if (!request.allowScript || !request.allowScript(*script)) {
            report.status = Status::ScriptNotAllowed;
            report.message = tr("The script %1 was not run, it has not been allowed").arg(script->path());
            return;
        }
        if (const Result<> allowed = approvals.allow(script->content()); !allowed)
            qCWarning(lcCreate) << "the script will have to be allowed again:" << allowed.error;
    }
    const QString target = FolderPath::shortened(report.plan.target());
    const ScriptChanges changes;
    report.script = script->run(target, report.label, request.scriptLimits);
    if (changes.takeInto(report.record))
        rememberChanges(report);
    if (report.script.hasSucceeded())
        return;
    report.status = report.script.outcome == ScriptResult::Outcome::TimedOut ? Status::ScriptTimedOut
                                                                             : Status::ScriptFailed;
    report.message = report.script.failure();
}

UndoReport refused(const QString &message)
{
    return {UndoReport::Status::Refused, message, {}, {}};
}

UndoReport reportOf(const History::Creation &creation, const Creation::UndoOutcome &outcome)
{
    UndoReport report;
    report.label = creation.label;
    report.folder = QFile::decodeName(creation.record.target);
    const QString shownFolder = lineText(creation.record.target);
    if (outcome.succeeded) {
        report.status = UndoReport::Status::Undone;
        report.message = tr("Undid \"%1\" in %2").arg(report.label, shownFolder);
        return report;
    }
    report.status = outcome.rest ? UndoReport::Status::Incomplete : UndoReport::Status::Refused;
    const QString message = outcome.rest ? tr("\"%1\" in %2 was not undone completely: %3")
                                         : tr("\"%1\" in %2 was not undone: %3");
    report.message = message.arg(report.label, shownFolder, outcome.error);
    return report;
}

/// Undoes the creation that the history keeps, so that it can be gone on with if it does not get to the end.
UndoReport undoKept(const History &history, const History::Creation &creation)
{
    if (const Result<> begun = history.beginUndo(); !begun)
        return reportOf(creation, {false, begun.error});
    const Creation::UndoOutcome outcome =
        Creation::undo(creation.record, creation.isBeingUndone ? Creation::EarlierUndo::Unfinished
                                                               : Creation::EarlierUndo::None);
    Result<> kept;
    if (outcome.succeeded)
        forget(history);
    else if (outcome.rest)
        kept = history.store({creation.id, creation.label, *outcome.rest, true});
    else if (!creation.isBeingUndone)
        kept = history.endUndo();
    if (!kept)
        qCWarning(lcCreate) << "what was not undone is not remembered well:" << kept.error;
    return reportOf(creation, outcome);
}

} // namespace

Creation::Plan planCreation(const CreationRequest &request)
{
    setUpApplicationSupport();
    Creation::Options options;
    options.onConflict = request.onConflict;
    // A record that was never given a tree has nothing to create.
    const QNBHierarchyItemPtr &root = request.preset->fileHierarchy();
    return Creation::plan(root ? *root : *QNBHierarchyItem::init(), request.folder, options);
}

CreationReport createPreset(const CreationRequest &request, const Creation::Progress &progress)
{
    CreationReport report;
    report.label = request.preset->label();
    report.plan = planCreation(request);
    if (!report.plan.canBeExecuted()) {
        report.message = obstacles(report.plan);
        return report;
    }
    const Creation::Outcome outcome = Creation::execute(report.plan, progress);
    if (!outcome.succeeded) {
        report.status = outcome.cancelled ? Status::Cancelled : Status::Failed;
        report.message = outcome.error;
        return report;
    }
    report.status = Status::Created;
    report.message = tr("Created \"%1\" in %2").arg(report.label, report.plan.target());
    report.id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    report.record = outcome.record;
    remember(report);

    const QString script = request.preset->values().value(QNBPresetKey::scriptFile).toString();
    if (request.runScript && !script.isEmpty())
        runScript(request, script, report);
    return report;
}

UndoReport undoLastCreation()
{
    const History history;
    QString error;
    const std::optional<FileLock> lock = history.lock(&error);
    if (!lock)
        return refused(error);
    const std::optional<History::Creation> creation = history.read(&error);
    if (!creation) {
        if (!error.isEmpty())
            return refused(error);
        UndoReport nothing;
        nothing.message = tr("There is nothing to undo");
        return nothing;
    }
    return undoKept(history, *creation);
}

UndoReport undoCreation(const CreationReport &report)
{
    const History history;
    QString error;
    const std::optional<FileLock> lock = history.lock(&error);
    if (!lock)
        return refused(error);
    // It is kept as it is by now: changed by its script, or undone in part.
    if (const std::optional<History::Creation> last = history.read(&error); last && last->id == report.id)
        return undoKept(history, *last);
    return reportOf({report.id, report.label, report.record}, Creation::undo(report.record));
}
