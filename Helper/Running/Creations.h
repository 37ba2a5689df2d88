// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/CreationNotices.h"
#include "Helper/Running/CreationPanel.h"
#include "Helper/Running/CreationWorker.h"
#include "Helper/Running/RecentFolders.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class SessionBus;

/// What the user has created: carries it out, shows how far it is and what became of it, asks about scripts,
/// and remembers in which folders it was.
class Creations : public QObject
{
public:
    /// How the notice of a creation is answered.
    enum class Answers {
        /// It can be undone from there, and its folder shown.
        Offered,
        /// Nobody would be there to hear: the process does not outlive its window.
        None,
    };

    /// \a idle is called, from the event loop, when nothing is left to do.
    Creations(std::shared_ptr<SessionBus> bus, Answers answers, std::function<void()> idle);
    ~Creations() override;

    /// To create one preset in all of \a folders, in one step.
    static QList<CreationOrder> ordersIn(const QStringList &folders, qsizetype place, const QString &label);

    /// Tells the user of creations that were killed in the middle, unless that has been told.
    void tellOfInterrupted();
    /// Of any thread. False, and none of \a orders is taken, if too much would wait.
    bool create(const QList<CreationOrder> &orders);
    /// The same, and tells the user if it is too much.
    void createOrTell(const QList<CreationOrder> &orders);
    void undoLast() { worker_->undoLast(); }

    bool isBusy() const { return worker_->isBusy(); }
    /// See RecentFolders::existing().
    QStringList recentFolders() const { return folders_.existing(); }
    CreationNotices &notices() { return notices_; }

    /// Cancels everything, which is undone, and shows nothing more.
    void cancelAll();
    /// Waits until what is being created has been undone.
    void leave();

private:
    void remember(const QList<CreationOrder> &orders);
    void askAboutScript(const CreationOrder &order, const Script &script);

    bool isCancelled_ = false;
    RecentFolders folders_;
    std::optional<CreationWorker> worker_;
    CreationPanel panel_;
    CreationNotices notices_;
};
