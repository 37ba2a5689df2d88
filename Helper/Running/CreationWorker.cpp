// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/CreationWorker.h"

#include "Helper/Presets.h"

#include <QLoggingCategory>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcWorker, "quenby.helper.worker")

/// The preset of an order, in the list as it is now.
Result<QNBPresetRecordPtr> presetOf(const CreationOrder &order)
{
    using Preset = Result<QNBPresetRecordPtr>;
    const Result<QNBSettings> settings = readSettings();
    if (!settings)
        return Preset::failure(settings.error);
    const QList<QNBPresetRecordPtr> &presets = settings->presets;
    if (order.place < presets.size() && presets[order.place]->label() == order.label)
        return presets[order.place];
    // The list has changed since the order was given.
    QString error;
    const QNBPresetRecordPtr preset = presetShown(presets, order.label, std::nullopt, &error);
    return preset ? Preset(preset) : Preset::failure(error);
}

} // namespace

/// What both threads touch, and the thread.
class CreationWorker::Thread
{
public:
    Thread()
        : interruption_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (interruption_ < 0)
            qCWarning(lcWorker) << "a script cannot be interrupted:" << std::strerror(errno);
        thread_.setObjectName(QStringLiteral("creation"));
        context_.moveToThread(&thread_);
        thread_.start();
    }
    ~Thread()
    {
        thread_.quit();
        thread_.wait();
        if (interruption_ >= 0)
            ::close(interruption_);
    }
    Thread(const Thread &) = delete;
    Thread &operator=(const Thread &) = delete;

    template <typename Action>
    void run(Action action)
    {
        QMetaObject::invokeMethod(&context_, std::move(action), Qt::QueuedConnection);
    }

    /// On the thread, before a creation. What was cancelled before was meant for another one.
    void begin(qsizetype order)
    {
        done_ = 0;
        total_ = 0;
        isCancelled_ = false;
        eventfd_t count = 0;
        ::eventfd_read(interruption_, &count);
        while (answers_.tryAcquire()) {
        }
        // Last: what is cancelled from here on is so by the rest of cancel().
        if (order <= cancelledOrders_)
            isCancelled_ = true;
    }
    bool isCancelled() const { return isCancelled_; }
    bool report(qsizetype done, qsizetype total)
    {
        done_ = done;
        total_ = total;
        return !isCancelled_;
    }
    Progress progress() const { return {done_, total_}; }
    int interruption() const { return interruption_; }

    bool waitForAnswer()
    {
        answers_.acquire();
        return answer_ && !isCancelled_;
    }
    void answer(bool mayRun)
    {
        answer_ = mayRun;
        answers_.release();
    }
    void cancel()
    {
        isCancelled_ = true;
        ::eventfd_write(interruption_, 1);
        answers_.release();
    }
    qsizetype nextOrder() { return ++orders_; }
    void cancelAll()
    {
        cancelledOrders_ = orders_.load();
        cancel();
    }

private:
    /// Lives on the thread.
    QObject context_;
    QThread thread_;
    const int interruption_;
    std::atomic<qsizetype> done_ = 0;
    std::atomic<qsizetype> total_ = 0;
    std::atomic<bool> isCancelled_ = false;
    std::atomic<bool> answer_ = false;
    QSemaphore answers_;
    /// How many were given.
    std::atomic<qsizetype> orders_ = 0;
    std::atomic<qsizetype> cancelledOrders_ = 0;
};

CreationWorker::CreationWorker(Handlers handlers)
    : handlers_(std::move(handlers))
    , thread_(std::make_unique<Thread>())
{
}

CreationWorker::~CreationWorker()
{
    cancelAll();
}

bool CreationWorker::create(const QList<CreationOrder> &orders)
{
    qsizetype waiting = unfinished_;
    do {
        if (waiting + orders.size() > mostWaiting)
            return false;
    } while (!unfinished_.compare_exchange_weak(waiting, waiting + orders.size()));
    for (const CreationOrder &order : orders)
        createLater(order);
    return true;
}

void CreationWorker::createLater(const CreationOrder &order)
{
    thread_->run([this, order, number = thread_->nextOrder()] {
        thread_->begin(number);
        toOwnThread([this, order] { handlers_.begun(order); });
        const auto report = std::make_shared<CreationReport>();
        report->label = order.label;
        if (thread_->isCancelled()) {
            report->status = CreationReport::Status::Cancelled;
        } else if (const Result<QNBPresetRecordPtr> preset = presetOf(order)) {
            CreationRequest request;
            request.preset = *preset;
            request.folder = order.folder;
            request.step = order.step;
            request.scriptLimits.interruption = thread_->interruption();
            request.allowScript = [this, order](const Script &script) {
                toOwnThread([this, order, script] { handlers_.askAboutScript(order, script); });
                return thread_->waitForAnswer();
            };
            *report = createPreset(
                request, [this](qsizetype done, qsizetype total) { return thread_->report(done, total); });
        } else {
            report->message = preset.error;
        }
        if (!report->step && order.step)
            report->warning = order.step->endFolder();
        toOwnThread([this, order, report] {
            handlers_.ended(order, report);
            finished();
        });
    });
}

void CreationWorker::undoLast()
{
    undoBy([] { return undoLastCreation(); });
}

void CreationWorker::undo(const std::shared_ptr<CreationReport> &creation)
{
    undoBy([creation] { return undoCreation(*creation); });
}

void CreationWorker::undoBy(std::function<UndoReport()> action)
{
    ++unfinished_;
    thread_->run([this, action = std::move(action)] {
        const UndoReport report = action();
        toOwnThread([this, report] {
            handlers_.undone(report);
            finished();
        });
    });
}

CreationWorker::Progress CreationWorker::progress() const
{
    return thread_->progress();
}

void CreationWorker::answerAboutScript(bool mayRun)
{
    thread_->answer(mayRun);
}

void CreationWorker::cancel()
{
    thread_->cancel();
}

void CreationWorker::cancelAll()
{
    thread_->cancelAll();
}

void CreationWorker::toOwnThread(std::function<void()> action)
{
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

void CreationWorker::finished()
{
    if (--unfinished_ == 0)
        handlers_.idle();
}
