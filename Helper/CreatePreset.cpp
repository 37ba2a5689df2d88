// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CreatePreset.h"

#include "Helper/Creation/InterruptedUndo.h"
#include "Helper/FolderPath.h"
#include "Helper/History.h"
#include "Helper/Journals.h"
#include "Helper/Presets.h"
#include "Helper/ScriptApprovals.h"
#include "Helper/ScriptChanges.h"
#include "Platform/LineText.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBFolderMenu.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <optional>
#include <vector>

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

QString scriptsFolder()
{
    return QDir(QNBApplicationSupportPath()).filePath(QNBFolderMenu::scriptsFolder);
}

void runScript(const CreationRequest &request, const QString &name, CreationReport &report)
{
    const Result<Script> script = Script::find(name, scriptsFolder());
    if (!script) {
        report.status = Status::ScriptFailed;
        report.script.outcome = ScriptResult::Outcome::CouldNotStart;
        report.script.error = script.error;
        report.message = script.error;
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
    if (changes.takeInto(report.record)) {
        const QString problem = report.step->change(report.place, report.record);
        if (!problem.isEmpty() && report.warning.isEmpty())
            report.warning = tr("What the script has changed cannot be undone later: %1").arg(problem);
    }
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

QString shownFolders(const QStringList &folders)
{
    return lineText(folders.join(QStringLiteral(", ")));
}

UndoReport reportOf(const QString &label, const Creation::Records &records,
                    const Creation::UndoOutcome &outcome)
{
    UndoReport report;
    report.label = label;
    QStringList shown;
    for (const Creation::Record &record : records) {
        report.folders.append(QFile::decodeName(record.target));
        shown.append(lineText(record.target));
    }
    const QString folders = shownFolders(shown);
    if (outcome.succeeded) {
        report.status = UndoReport::Status::Undone;
        report.message = tr("Undid \"%1\" in %2").arg(report.label, folders);
        return report;
    }
    report.status = outcome.rest ? UndoReport::Status::Incomplete : UndoReport::Status::Refused;
    const QString message = outcome.rest ? tr("\"%1\" in %2 was not undone completely: %3")
                                         : tr("\"%1\" in %2 was not undone: %3");
    report.message = message.arg(report.label, folders, outcome.error);
    return report;
}

/// Undoes the creation that the history keeps, so that it can be gone on with if it does not get to the end.
UndoReport undoKept(const History &history, const History::Creation &creation)
{
    const auto report = [&creation](const Creation::UndoOutcome &outcome) {
        return reportOf(creation.label, creation.records, outcome);
    };
    if (const Result<> begun = history.beginUndo(); !begun)
        return report({false, begun.error});
    const Creation::UndoOutcome outcome =
        Creation::undo(creation.records, creation.isBeingUndone ? Creation::EarlierUndo::Unfinished
                                                                : Creation::EarlierUndo::None);
    Result<> kept;
    if (outcome.succeeded)
        forget(history);
    else if (outcome.rest)
        kept = history.store({creation.id, creation.label, *outcome.rest, true, creation.begun});
    else if (!creation.isBeingUndone)
        kept = history.endUndo();
    if (!kept)
        qCWarning(lcCreate) << "what was not undone is not remembered well:" << kept.error;
    return report(outcome);
}

using Interrupted = std::vector<Journals::Interrupted>;

/// Those journals that still stand for something. One of a creation that was stored, and killed right after
/// that, does not. Those that cannot be read are appended to \a unreadable.
Interrupted interruptedCreations(const std::optional<History::Creation> &last,
                                 std::vector<Journals::Unreadable> &unreadable)
{
    const Journals journals;
    Interrupted interrupted = journals.interrupted(unreadable);
    std::erase_if(interrupted, [&](const Journals::Interrupted &journal) {
        const bool isStored = last && last->id == journal.content.id;
        if (const Result<> removed = isStored ? journals.remove(journal.path) : Result<>(); !removed)
            qCWarning(lcCreate) << "a journal of no use is left:" << removed.error;
        return isStored;
    });
    return interrupted;
}

/// Undoes all folders of an interrupted creation, from the last to the first.
UndoReport undoInterrupted(const Interrupted &interrupted, const QString &id)
{
    UndoReport report;
    QStringList left;
    bool canBeTriedAgain = false;
    for (const Journals::Interrupted &journal : interrupted) {
        if (journal.content.id != id)
            continue;
        report.label = journal.content.label;
        report.folders.prepend(journal.content.plan.target());
        const Creation::InterruptedUndoOutcome outcome = Creation::undo(journal.content);
        if (!outcome.left.isEmpty())
            left.prepend(outcome.left);
        canBeTriedAgain = canBeTriedAgain || outcome.canBeTriedAgain;
        if (outcome.canBeTriedAgain)
            continue;
        if (const Result<> removed = Journals().remove(journal.path); !removed)
            left.append(removed.error);
    }
    report.status = left.isEmpty() ? UndoReport::Status::Undone : UndoReport::Status::Incomplete;
    const QString folders = shownFolders(report.folders);
    report.message =
        left.isEmpty()
            ? tr("Undid \"%1\" in %2, whose creation had been interrupted").arg(report.label, folders)
            : tr("\"%1\" in %2, whose creation had been interrupted, was not undone completely: %3")
                  .arg(report.label, folders, left.join(QStringLiteral("; ")));
    return report;
}

/// Plans and executes.
CreationReport createStructure(const CreationRequest &request, const Creation::Progress &progress,
                               const std::shared_ptr<UndoStep> &step)
{
    CreationReport report;
    report.label = request.preset->label();
    report.step = step;
    report.plan = planCreation(request);
    if (!report.plan.canBeExecuted()) {
        report.message = obstacles(report.plan);
        return report;
    }
    const Creation::Outcome outcome =
        Creation::execute(report.plan, progress, step->beginFolder(report.label, report.plan));
    if (!outcome.succeeded) {
        step->discard();
        report.status = outcome.cancelled ? Status::Cancelled : Status::Failed;
        report.message = outcome.error;
        return report;
    }
    report.status = Status::Created;
    report.message = tr("Created \"%1\" in %2").arg(report.label, report.plan.target());
    report.record = outcome.record;
    report.place = step->add(outcome.record);
    return report;
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
    const std::shared_ptr<UndoStep> step = request.step ? request.step : std::make_shared<UndoStep>();
    CreationReport report = createStructure(request, progress, step);
    if (const QString problem = step->endFolder(); !problem.isEmpty())
        report.warning = tr("This creation cannot be undone later: %1").arg(problem);

    const QString script = request.preset->values().value(QNBPresetKey::scriptFile).toString();
    if (report.isCreated() && request.runScript && !script.isEmpty())
        runScript(request, script, report);
    return report;
}

UndoReport undoLastCreation()
{
    const History history;
    const Result<FileLock> lock = history.lock();
    if (!lock)
        return refused(lock.error);
    const auto read = history.read();
    const std::optional<History::Creation> creation = read.value.value_or(std::nullopt);
    std::vector<Journals::Unreadable> unreadable;
    Interrupted interrupted = interruptedCreations(creation, unreadable);
    // On a disk that is not there now, say: what else there is must not wait for that.
    const auto isAway = [](const Journals::Interrupted &journal) {
        return !QFileInfo(QFile::decodeName(journal.content.plan.resolvedTarget())).isDir();
    };
    if (creation || !std::all_of(interrupted.cbegin(), interrupted.cend(), isAway))
        std::erase_if(interrupted, isAway);
    const qint64 begun =
        std::max(creation ? creation->begun : 0, interrupted.empty() ? 0 : interrupted.front().content.begun);
    // A creation is not taken for a later one, of which this is all that is left.
    for (const Journals::Unreadable &journal : unreadable) {
        if (journal.changed >= begun)
            return refused(tr("What was noted of a creation that was interrupted cannot be read: %1. Only "
                              "without that file what was created before can be undone.")
                               .arg(lineText(journal.path)));
    }
    if (!interrupted.empty() && (!creation || interrupted.front().content.begun > creation->begun))
        return undoInterrupted(interrupted, interrupted.front().content.id);
    if (!creation) {
        if (!read)
            return refused(read.error);
        UndoReport nothing;
        nothing.message = tr("There is nothing to undo");
        return nothing;
    }
    return undoKept(history, *creation);
}

UndoReport undoCreation(const CreationReport &report)
{
    const History history;
    const Result<FileLock> lock = history.lock();
    if (!lock)
        return refused(lock.error);
    // It is kept as it is by now: changed by its script, or undone in part.
    const std::optional<History::Creation> last = history.read().value.value_or(std::nullopt);
    const QString &id = report.step->id();
    if (last && last->id == id)
        return undoKept(history, *last);
    std::vector<Journals::Unreadable> unreadable;
    const Interrupted interrupted = interruptedCreations(last, unreadable);
    if (std::any_of(interrupted.cbegin(), interrupted.cend(),
                    [&id](const Journals::Interrupted &journal) { return journal.content.id == id; }))
        return undoInterrupted(interrupted, id);
    return reportOf(report.label, report.step->records(), Creation::undo(report.step->records()));
}

bool canUndo()
{
    return History().hasCreation() || Journals().hasInterrupted();
}

QStringList newsOfInterruptedCreations()
{
    QStringList lines;
    const Journals journals;
    if (!journals.hasInterrupted())
        return lines;
    std::vector<Journals::Unreadable> unreadable;
    for (const Journals::Interrupted &journal :
         interruptedCreations(History().read().value.value_or(std::nullopt), unreadable)) {
        if (journal.content.isTold)
            continue;
        lines.prepend(tr("The creation of \"%1\" in %2 was interrupted. Undoing it removes what it has made.")
                          .arg(lineText(journal.content.label), lineText(journal.content.plan.target())));
        journals.setTold(journal.path);
    }
    return lines;
}
