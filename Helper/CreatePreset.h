// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Execution.h"
#include "Helper/Creation/Record.h"
#include "Helper/Script.h"
#include "Source/QNBPresetRecord.h"

#include <QString>
#include <functional>

/// Whether a script that was never allowed may run, now and from now on. Whoever answers shows it to the
/// user.
using ScriptQuestion = std::function<bool(const Script &script)>;

struct CreationRequest
{
    QNBPresetRecordPtr preset;
    /// An absolute path.
    QString folder;
    Creation::OnConflict onConflict = Creation::OnConflict::UniqueName;
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
    /// Of this creation among all; for undoCreation().
    QString id;
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
    QString folder;
};

/// What createPreset() would do; changes nothing but for making the folder of content files if there is none.
Creation::Plan planCreation(const CreationRequest &request);

/// Creates the preset's structure, remembers it for undoing, and runs the preset's script. Blocks, and may be
/// called on any thread, as long as nobody else uses the preset.
CreationReport createPreset(const CreationRequest &request, const Creation::Progress &progress = {});

/// Undoes the last creation of whatever process, or this one.
UndoReport undoLastCreation();
UndoReport undoCreation(const CreationReport &report);
