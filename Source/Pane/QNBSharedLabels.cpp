// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBSharedLabels.h"

#include "Platform/LineText.h"
#include "Source/Model/QNBNumberedPresetName.h"
#include "Source/Model/QNBPresetRecord.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/ViewCell.h"

#include <algorithm>

namespace {

QString labelOf(const ArrayController::Object &preset)
{
    return preset->valueForKey(QNBPresetKey::label).toString();
}

} // namespace

void QNBSharedLabels::observe(const ArrayController &controller)
{
    controller_ = &controller;
    isCounted_ = false;
    const auto changed = [this] { isCounted_ = false; };
    for (const auto change : {&ArrayController::objectInserted, &ArrayController::objectRemoved})
        QObject::connect(&controller, change, &connections_, changed);
    QObject::connect(&controller, &ArrayController::contentChanged, &connections_, changed);
    QObject::connect(&controller, &ArrayController::objectChanged, &connections_, changed);
}

void QNBSharedLabels::count()
{
    isCounted_ = true;
    presets_.clear();
    for (const ArrayController::Object &preset : controller_->arrangedObjects())
        ++presets_[labelOf(preset)];
}

void QNBSharedLabels::mark(ViewCell &cell, int row)
{
    if (!isCounted_)
        count();
    const QString label = labelOf(controller_->arrangedObjects().at(row));
    if (presets_.value(label) < 2)
        return;
    const QString name = QNBNumberedPresetName(row);
    if (!presets_.contains(name)) {
        cell.note = QStringLiteral("(%1)").arg(name);
        cell.toolTip =
            tr("Several presets are called \"%1\". Commands name this one %2.").arg(lineText(label), name);
        return;
    }
    // Who gives that name means the preset with that label.
    const auto presets = controller_->arrangedObjects().first(row + 1);
    const auto position = std::count_if(presets.begin(), presets.end(),
                                        [&label](const auto &preset) { return labelOf(preset) == label; });
    cell.note = tr("(same label)");
    cell.toolTip =
        tr("Several presets are called \"%1\". Commands name this one by its label and --position %2.")
            .arg(lineText(label), QString::number(position));
}
