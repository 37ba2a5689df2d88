// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
QT_END_NAMESPACE

/// Where a preset is to be created: the folders that were named, or one that was used before, or one that the
/// user chooses here.
class PlacePicker : public QWidget
{
public:
    /// \a changed is called when the user has chosen a folder.
    explicit PlacePicker(std::function<void()> changed);

    /// The first of these places is chosen: all of \a named, as one place, if there are any; then the folders
    /// \a recent. All are absolute paths.
    void setPlaces(const QStringList &named, const QStringList &recent);
    /// Those of the chosen place; none if there is no place yet.
    QStringList folders() const;
    /// Has the user choose a folder, and calls \a then, if there is one, once it was chosen.
    void chooseFolder(const std::function<void()> &then = {});

private:
    void insertPlace(int index, const QStringList &folders);

    const std::function<void()> changed_;
    QComboBox *places_;
};
