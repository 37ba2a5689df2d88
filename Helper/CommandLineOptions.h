// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"

#include <QStringList>
#include <optional>

/// What the command line asks for.
struct CommandLineOptions
{
    enum class Command { List, Create, Launcher, Undo, Help, Version };
    Command command = Command::Help;
    /// A label, or "#" and a number of the list.
    QString preset;
    /// Given by those who know a label: which of the presets that have it, from 1.
    std::optional<int> position;
    QStringList folders;
    Creation::OnConflict onConflict = Creation::OnConflict::UniqueName;
    bool isDryRun = false;
    bool isJson = false;
    bool runScript = true;
    bool allowScript = false;
    bool notify = false;
    /// In seconds.
    std::optional<int> scriptTimeLimit;

    /// \a arguments as QCoreApplication gives them. None if they make no sense, with the reason in \a error.
    static std::optional<CommandLineOptions> parse(const QStringList &arguments, QString *error);
    /// How the program is called.
    static QString help();
};
