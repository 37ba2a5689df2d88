// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QListWidgetItem;
QT_END_NAMESPACE

/// The list of the panes that were found, when there are several and none is named.
class PaneChooser : public QWidget
{
    Q_OBJECT
public:
    explicit PaneChooser(const QStringList &panePaths, QWidget *parent = nullptr);

Q_SIGNALS:
    /// The user chose the pane at \a path.
    void chosen(const QString &path);

private:
    void activate(const QListWidgetItem *item);
};
