// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Execution.h"
#include "Helper/Creation/Record.h"
#include "Helper/Script.h"
#include "Helper/UndoStep.h"
#include "Source/Model/QNBPresetRecord.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

/// Whether a script that was never allowed may run, now and from now on. Whoever answers shows it to the
/// user.
using ScriptQuestion = std::function<bool(const Script &script)>;

struct CreationRequest
{
    QNBPresetRecordPtr preset;
    /// An absolute path.
    QString folder;
    Creation::OnConflict onConflict = Creation::OnConflict::UniqueName;
    /// What the creation is a part of, if it is one of several that are undone together.
    std::shared_ptr<UndoStep> step = {};
    bool runScript = true;
    /// Called on the thread that creates, after the structure was made. Without it such a script does not
    /// run.
    ScriptQuestion allowScript = {};
    ScriptLimits scriptLimits = {};
};

struct CreationReport
{
    enum class Status {
        Created,
        /// Nothing was done, see the plan.
        Problems,
        /// These two: everything made was undone.
        Failed,
        Cancelled,
        /// From here on the structure was made.
        ScriptNotAllowed,
        ScriptFailed,
        ScriptTimedOut,
    };
    Status status = Status::Problems;
    Creation::Plan plan;
    /// What happened, for people.
    QString message;
    /// Why it cannot be undone, or what its script changed cannot, for people; empty if it can, or if more
    /// folders follow.
    QString warning;
    /// What undoCreation() undoes, and the place of this creation in it.
    std::shared_ptr<UndoStep> step;
    std::size_t place = 0;
    QString label;
    Creation::Record record;
    ScriptResult script;

    /// Whether the structure was made, whatever became of the script.
    bool isCreated() const { return status == Status::Created || status >= Status::ScriptNotAllowed; }
};

struct UndoReport
{
    enum class Status {
        Undone,
        NothingToUndo,
        /// Everything was left as it is.
        Refused,
        /// Something could not be removed after the rest was. Undoing again goes on with it.
        Incomplete,
    };
    Status status = Status::NothingToUndo;
    /// For people.
    QString message;
    /// Of the preset.
    QString label;
    QStringList folders;
};

/// What createPreset() would do; changes nothing but for making the folder of content files if there is none.
Creation::Plan planCreation(const CreationRequest &request);

/// Creates the preset's structure, remembers it for undoing, and runs the preset's script. Blocks, and may be
/// called on any thread, as long as nobody else uses the preset.
CreationReport createPreset(const CreationRequest &request, const Creation::Progress &progress = {});

/// Undoes the last creation of whatever process, or this one, in all its folders. One that was killed in the
/// middle counts too.
UndoReport undoLastCreation();
UndoReport undoCreation(const CreationReport &report);
/// Whether there is something to undo.
bool canUndo();

/// What the user has not been told yet of creations that were killed in the middle: a line for each, in none
/// of them afterwards.
QStringList newsOfInterruptedCreations();
