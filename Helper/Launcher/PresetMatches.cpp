// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetMatches.h"

#include "Helper/ShownName.h"
#include "Source/QNBNumberedPresetName.h"

#include <QCoreApplication>

void PresetMatches::setLabels(const QStringList &labels)
{
    beginResetModel();
    labels_ = labels;
    counts_.clear();
    for (const QString &label : labels)
        ++counts_[label];
    filter_ = PresetFilter(labels);
    places_ = filter_.placesFor(typed_);
    endResetModel();
}

void PresetMatches::setTyped(const QString &typed)
{
    if (typed == typed_)
        return;
    beginResetModel();
    typed_ = typed;
    places_ = filter_.placesFor(typed_);
    endResetModel();
}

int PresetMatches::rowOf(qsizetype place, const QString &label) const
{
    if (labels_.value(place) != label)
        place = counts_.value(label) == 1 ? labels_.indexOf(label) : -1;
    return int(places_.indexOf(place));
}

int PresetMatches::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(places_.size());
}

QVariant PresetMatches::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
        return {};
    const qsizetype place = places_.at(index.row());
    const QString &label = labels_.at(place);
    QString shown = ShownName::ofName(label);
    if (shown.trimmed().isEmpty())
        shown = QCoreApplication::translate("PresetMatches", "(no name)");
    return counts_.value(label) < 2 ? shown : shown + u' ' + QNBNumberedPresetName(place);
}
