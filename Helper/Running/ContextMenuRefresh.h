// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Processes/Subprocess.h"

#include <memory>

/// Keeps the entries in the file managers' menus up to date, by the plug-in that writes them, if the user has
/// it installed.
class ContextMenuRefresh
{
public:
    /// Starts the plug-in, or has it started again once the one that runs has ended. Waits for nothing.
    void refresh();

private:
    void ended(int status);

    std::unique_ptr<Subprocess> process_;
    bool again_ = false;
};
