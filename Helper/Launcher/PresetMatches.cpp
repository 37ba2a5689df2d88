// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetMatches.h"

#include "Helper/ShownName.h"
#include "Platform/LineText.h"
#include "Source/Model/QNBNumberedPresetName.h"

#include <QCoreApplication>

void PresetMatches::setLabels(const QStringList &labels)
{
    beginResetModel();
    labels_ = labels;
    counts_.clear();
    for (const QString &label : labels)
        ++counts_[label];
    QStringList searched;
    searched.reserve(labels.size());
    for (qsizetype place = 0; place < labels.size(); ++place)
        searched.append(distinct(place, lineText(labels[place])));
    filter_ = PresetFilter(searched);
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
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const qsizetype place = places_.at(index.row());
    const QString &label = labels_.at(place);
    switch (role) {
    case Qt::DisplayRole:
        return distinct(place, ShownName::ofName(label));
    case wholeTextRole:
        return distinct(place, lineText(label));
    default:
        return {};
    }
}

QString PresetMatches::distinct(qsizetype place, const QString &name) const
{
    const QString shown =
        name.trimmed().isEmpty() ? QCoreApplication::translate("PresetMatches", "(no name)") : name;
    return counts_.value(labels_.at(place)) < 2 ? shown : shown + u' ' + QNBNumberedPresetName(place);
}
