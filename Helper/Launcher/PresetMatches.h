// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Launcher/PresetFilter.h"

#include <QAbstractListModel>
#include <QHash>

/// The presets that match what is typed, the best match first: their labels as they are shown. Of presets
/// that share a label each is shown with its number in the list of the settings.
class PresetMatches : public QAbstractListModel
{
public:
    /// What is shown of a preset, but not shortened.
    static constexpr int wholeTextRole = Qt::UserRole;

    /// In their order.
    void setLabels(const QStringList &labels);
    void setTyped(const QString &typed);

    const QStringList &labels() const { return labels_; }
    /// The place of the preset of \a row in the list of all.
    qsizetype placeAt(int row) const { return places_.at(row); }
    /// The row of the preset that has this label: the one at \a place if it does, otherwise the only one; -1
    /// if there is none, or it matches no more.
    int rowOf(qsizetype place, const QString &label) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    /// \a name, of the preset at \a place, with what else tells it from the others.
    QString distinct(qsizetype place, const QString &name) const;

    QStringList labels_;
    /// How many presets have each label.
    QHash<QString, int> counts_;
    PresetFilter filter_;
    QString typed_;
    QList<qsizetype> places_;
};
