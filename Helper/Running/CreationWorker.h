// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/CreatePreset.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

/// What the user has chosen: a preset by its place in the list and its label, and where.
struct CreationOrder
{
    qsizetype place = 0;
    QString label;
    /// An absolute path.
    QString folder;
    /// What the creation is a part of, if it is one of several that are undone together.
    std::shared_ptr<UndoStep> step = {};
};

/// Creates and undoes on a thread of its own, one thing after the other. The presets are read there, when the
/// turn comes: an order is small, and nothing is shared.
class CreationWorker : public QObject
{
public:
    /// All are called on the thread that made this, from the event loop.
    struct Handlers
    {
        std::function<void(const CreationOrder &order)> begun;
        std::function<void(const CreationOrder &order, const std::shared_ptr<CreationReport> &report)> ended;
        std::function<void(const UndoReport &report)> undone;
        /// The thread waits for the answer, or for cancel().
        std::function<void(const CreationOrder &order, const Script &script)> askAboutScript;
        /// Nothing is left to do.
        std::function<void()> idle;
    };
    struct Progress
    {
        qsizetype done = 0;
        qsizetype total = 0;
    };

    explicit CreationWorker(Handlers handlers);
    /// Cancels everything, and waits until it has been undone.
    ~CreationWorker() override;

    /// So many things may wait to be done, whoever ordered them: the bus takes orders from any program.
    static constexpr qsizetype mostWaiting = 1000;

    /// Of any thread. False, and none of \a orders is taken, if more than mostWaiting would wait.
    bool create(const QList<CreationOrder> &orders);
    void undoLast();
    void undo(const std::shared_ptr<CreationReport> &report);

    bool isBusy() const { return unfinished_ > 0; }
    /// Of what is being created.
    Progress progress() const;
    void answerAboutScript(bool mayRun);
    /// Stops what is being created. What was made is undone; a script that runs is ended.
    void cancel();
    /// The same for all orders that were given so far.
    void cancelAll();

private:
    class Thread;

    void createLater(const CreationOrder &order);
    void undoBy(std::function<UndoReport()> action);
    void toOwnThread(std::function<void()> action);
    void finished();

    const Handlers handlers_;
    std::unique_ptr<Thread> thread_;
    std::atomic<qsizetype> unfinished_ = 0;
};
