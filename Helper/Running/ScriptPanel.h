// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/CreationWorker.h"
#include "Helper/Script.h"

#include <QDialog>

#include <functional>

/// Asks whether a script that was never allowed may run, and shows all of what it says.
class ScriptPanel : public QDialog
{
public:
    /// \a answered is called once, with no if the panel is closed in whatever other way.
    ScriptPanel(const CreationOrder &order, const Script &script, std::function<void(bool mayRun)> answered);
};
