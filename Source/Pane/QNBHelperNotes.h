// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Shared/Source/QNBHelperState.h"

#include <QCoreApplication>
#include <QObject>

#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QLabel;
class QWidget;
QT_END_NAMESPACE

/// What the tab General says of the desktop, as the running helper finds it: by which way the shortcut is
/// heard, and how the presets are reached where the desktop shows no icons of programs. Nobody waits for the
/// helper; without one nothing is said.
class QNBHelperNotes : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(QNBHelperNotes)

public:
    /// Asks the running helper, and calls with its answer; with none if there is no helper, or it says
    /// nothing.
    using Ask =
        std::function<void(const std::function<void(const std::optional<QNBHelperState> &)> &answered)>;

    /// The labels are found in \a view by name. \a command is what the user binds to a key where the helper
    /// hears of none.
    QNBHelperNotes(QWidget &view, Ask ask, std::function<QString()> command);

    /// Asks anew.
    void update();

private:
    void show(const std::optional<QNBHelperState> &state);
    QString textOf(const QNBHelperState &state) const;
    QString trayTextOf(const QNBHelperState &state) const;

    const Ask ask_;
    const std::function<QString()> command_;
    QLabel *shortcutHint_;
    QLabel *shortcutNote_;
    QLabel *trayNote_;
};
