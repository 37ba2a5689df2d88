// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PresetLauncher.h"

#include "Helper/Running/Creations.h"
#include "Helper/Running/PaneLauncher.h"

#include <utility>

PresetLauncher::PresetLauncher(Creations &creations, std::function<void()> opened,
                               std::function<void()> closed)
    : creations_(creations)
    , opened_(std::move(opened))
    , launcher_({.create =
                     [&creations](qsizetype place, const QString &label, const QStringList &folders) {
                         creations.createOrTell(Creations::ordersIn(folders, place, label));
                     },
                 .openPane = [&creations] { PaneLauncher::launchOrTell(creations.notices()); }},
                std::move(closed))
{
}

void PresetLauncher::setSettings(const Result<QNBSettings> &settings)
{
    areKnown_ = bool(settings);
    if (settings)
        labels_ = labelsOf(settings->presets);
    launcher_.setPresets(labels_, areKnown_);
}

void PresetLauncher::open(const QStringList &named)
{
    open({.labels = labels_, .areKnown = areKnown_, .named = named}, {});
}

void PresetLauncher::open(Launcher::Content content, const QByteArray &activationToken)
{
    if (!content.areKnown)
        content.labels = labels_;
    content.recent = creations_.recentFolders();
    launcher_.open(content, activationToken);
    opened_();
}
