// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Notifications.h"
#include "Helper/Running/CreationWorker.h"

#include <QObject>

#include <functional>
#include <memory>

/// Tells the user what became of creations, by the desktop's notifications. Where there are none, what went
/// wrong is told in a window, and what went well is not.
class CreationNotices : public QObject
{
public:
    using UndoHandler = std::function<void(const std::shared_ptr<CreationReport> &report)>;

    /// \a undo is called when the user chooses to undo a creation in its notice. Without it notices have no
    /// actions.
    CreationNotices(std::shared_ptr<SessionBus> bus, UndoHandler undo);

    void show(const CreationOrder &order, const std::shared_ptr<CreationReport> &report);
    void show(const UndoReport &report);
    void showProblem(const QString &title, const QString &text);

    /// Waits until it is known of each notice whether it is shown, or for \a timeout.
    void flush(std::chrono::milliseconds timeout) { notifications_.flush(timeout); }

private:
    /// The creations that can be undone in their notices, the last ones; a desktop may show those for ever.
    static constexpr qsizetype mostKept = 4;

    void showWindow(const QString &title, const QString &text);
    void act(const QString &action, const std::weak_ptr<CreationReport> &report, const QString &folder);

    const UndoHandler undo_;
    Notifications notifications_;
    QList<std::shared_ptr<CreationReport>> reports_;
};
