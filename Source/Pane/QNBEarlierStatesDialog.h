// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBEarlierStates.h"

#include <QDialog>
#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QListWidget;
class QPlainTextEdit;
class QPushButton;
QT_END_NAMESPACE

/// Lets the user choose one of the earlier states: each with its date and the number of its presets, and what
/// restoring it would change. All texts are plain.
class QNBEarlierStatesDialog final : public QDialog
{
    Q_OBJECT

public:
    /// None if the user cancels, or the window or the program ends before there was a choice.
    using Runner = std::function<std::optional<QNBEarlierState>(
        QWidget *parent, const QList<QNBEarlierState> &states, const QList<QNBPresetRecordPtr> &presets)>;
    /// The one that asks the user, in front of the window of its parent and of nothing else.
    static Runner runner();

    /// \a presets are those that would give way.
    QNBEarlierStatesDialog(const QList<QNBEarlierState> &states, const QList<QNBPresetRecordPtr> &presets,
                           QWidget *parent = nullptr);

    std::optional<QNBEarlierState> chosen() const;

private:
    void showDifference(int row);

    const QList<QNBEarlierState> states_;
    const QList<QNBPresetRecordPtr> presets_;
    QListWidget *list_;
    QPlainTextEdit *difference_;
    QPushButton *restore_;
};
