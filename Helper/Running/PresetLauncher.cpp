// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PresetLauncher.h"

#include "Helper/CreatePreset.h"
#include "Helper/Running/Creations.h"
#include "Helper/Running/PaneLauncher.h"
#include "Platform/LineText.h"

#include <QCoreApplication>

#include <utility>

PresetLauncher::PresetLauncher(Creations &creations, std::function<void()> opened,
                               std::function<void()> closed)
    : creations_(creations)
    , opened_(std::move(opened))
    , problem_(QCoreApplication::translate("PresetLauncher", "they have not been read yet"))
    , launcher_({.create =
                     [&creations](qsizetype place, const QString &label, const QStringList &folders) {
                         creations.createOrTell(Creations::ordersIn(folders, place, label));
                     },
                 .undo = [&creations] { creations.undoLast(); },
                 .openPane = [&creations] { PaneLauncher::launchOrTell(creations.notices()); }},
                std::move(closed))
{
}

void PresetLauncher::setSettings(const Result<QNBSettings> &settings)
{
    problem_ = lineText(settings.error);
    if (settings)
        labels_ = labelsOf(settings->presets);
    launcher_.setPresets(labels_, problem_);
}

void PresetLauncher::open(const QStringList &named, const QByteArray &activationToken)
{
    open({.labels = labels_, .problem = problem_, .named = named}, activationToken);
}

void PresetLauncher::open(Launcher::Content content, const QByteArray &activationToken)
{
    if (!content.problem.isEmpty())
        content.labels = labels_;
    content.recent = creations_.recentFolders();
    content.canUndo = canUndo();
    launcher_.open(content, activationToken);
    opened_();
}
