// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLineJson.h"

#include "Helper/Presets.h"

namespace {

QString statusName(CreationReport::Status status)
{
    using Status = CreationReport::Status;
    switch (status) {
    case Status::Created:
        return QStringLiteral("created");
    case Status::Problems:
        return QStringLiteral("problems");
    case Status::Failed:
        return QStringLiteral("failed");
    case Status::Cancelled:
        return QStringLiteral("cancelled");
    case Status::ScriptNotAllowed:
        return QStringLiteral("scriptNotAllowed");
    case Status::ScriptTimedOut:
        return QStringLiteral("scriptTimedOut");
    case Status::ScriptFailed:
        break;
    }
    return QStringLiteral("scriptFailed");
}

QString outcomeName(ScriptResult::Outcome outcome)
{
    using Outcome = ScriptResult::Outcome;
    switch (outcome) {
    case Outcome::NotRun:
        return QStringLiteral("notRun");
    case Outcome::CouldNotStart:
        return QStringLiteral("couldNotStart");
    case Outcome::Exited:
        return QStringLiteral("exited");
    case Outcome::Signalled:
        return QStringLiteral("signalled");
    case Outcome::TimedOut:
        return QStringLiteral("timedOut");
    case Outcome::Interrupted:
        break;
    }
    return QStringLiteral("interrupted");
}

QString undoName(UndoReport::Status status)
{
    switch (status) {
    case UndoReport::Status::Undone:
        return QStringLiteral("undone");
    case UndoReport::Status::NothingToUndo:
        return QStringLiteral("nothingToUndo");
    case UndoReport::Status::Refused:
        return QStringLiteral("refused");
    case UndoReport::Status::Incomplete:
        break;
    }
    return QStringLiteral("incomplete");
}

QJsonObject script(const ScriptResult &result)
{
    return {{QStringLiteral("outcome"), outcomeName(result.outcome)},
            {QStringLiteral("code"), result.code},
            {QStringLiteral("error"), result.error},
            {QStringLiteral("output"), QString::fromUtf8(result.output)},
            {QStringLiteral("omittedOutput"), result.omittedOutput}};
}

} // namespace

QJsonArray CommandLineJson::presets(const QList<QNBPresetRecordPtr> &presets)
{
    QJsonArray array;
    for (const QNBPresetRecordPtr &preset : presets) {
        array.append(QJsonObject{
            {QStringLiteral("label"), preset->label()},
            {QStringLiteral("description"),
             preset->values().value(QNBPresetKey::presetDescription).toString()},
            {QStringLiteral("items"), qint64(numberOfItems(*preset))},
            {QStringLiteral("script"), preset->values().value(QNBPresetKey::scriptFile).toString()}});
    }
    return array;
}

QJsonObject CommandLineJson::plan(const Creation::Plan &plan)
{
    QJsonArray conflicts;
    for (const Creation::Conflict &conflict : plan.conflicts())
        conflicts.append(QJsonObject{{QStringLiteral("path"), conflict.path},
                                     {QStringLiteral("newName"), conflict.newName}});
    QJsonArray problems;
    for (const Creation::Problem &problem : plan.problems())
        problems.append(
            QJsonObject{{QStringLiteral("path"), problem.path}, {QStringLiteral("reason"), problem.reason}});
    return {{QStringLiteral("folder"), plan.target()},
            {QStringLiteral("possible"), plan.canBeExecuted()},
            {QStringLiteral("operations"), QJsonArray::fromStringList(plan.lines())},
            {QStringLiteral("conflicts"), conflicts},
            {QStringLiteral("problems"), problems}};
}

QJsonObject CommandLineJson::report(const CreationReport &report)
{
    QJsonObject object = plan(report.plan);
    object.insert(QStringLiteral("status"), statusName(report.status));
    object.insert(QStringLiteral("message"), report.message);
    object.insert(QStringLiteral("warning"), report.warning);
    object.insert(QStringLiteral("script"), script(report.script));
    return object;
}

QJsonObject CommandLineJson::undo(const UndoReport &report)
{
    return {{QStringLiteral("status"), undoName(report.status)},
            {QStringLiteral("preset"), report.label},
            {QStringLiteral("folder"), report.folders.value(0)},
            {QStringLiteral("folders"), QJsonArray::fromStringList(report.folders)},
            {QStringLiteral("message"), report.message}};
}

QJsonObject CommandLineJson::creations(const QString &label, bool isDryRun, const QJsonArray &folders)
{
    return {{QStringLiteral("preset"), label},
            {QStringLiteral("dryRun"), isDryRun},
            {QStringLiteral("creations"), folders}};
}
