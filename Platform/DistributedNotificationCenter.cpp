// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/DistributedNotificationCenter.h"

#include "Platform/NotificationBus.h"
#include "Platform/SessionBus.h"

#include <QSemaphore>
#include <QThread>

namespace {

/// How long the destructor waits for the thread to end. It is only ever used up if a bus falls silent
/// between answering us and answering the library; the thread is then left behind.
constexpr int threadEndTimeout = 500;

} // namespace

class DistributedNotificationCenter::Private
{
public:
    std::shared_ptr<NotificationObservers> observers = std::make_shared<NotificationObservers>();
    /// Lives on the centre's thread, and is destroyed there.
    NotificationBus *bus = nullptr;
    std::unique_ptr<QThread> thread = std::make_unique<QThread>();
    bool hasUnflushedPosts = false;

    explicit Private(const QString &address)
        : bus(new NotificationBus(address, observers))
    {
        thread->setObjectName(QStringLiteral("notifications"));
        bus->moveToThread(thread.get());
        QObject::connect(thread.get(), &QThread::finished, bus, &QObject::deleteLater);
        thread->start();
    }

    template <typename Action>
    void onThread(Action action)
    {
        QMetaObject::invokeMethod(bus, std::move(action), Qt::QueuedConnection);
    }
};

DistributedNotificationCenter::DistributedNotificationCenter()
    : DistributedNotificationCenter(SessionBus::address())
{
}

DistributedNotificationCenter::DistributedNotificationCenter(const QString &busAddress)
    : d_(std::make_unique<Private>(busAddress))
{
}

DistributedNotificationCenter::~DistributedNotificationCenter()
{
    if (d_->hasUnflushedPosts)
        flush();
    d_->observers->clear();
    d_->thread->quit();
    if (!d_->thread->wait(threadEndTimeout))
        static_cast<void>(d_->thread.release());
}

void DistributedNotificationCenter::postNotificationName(const QString &name)
{
    d_->hasUnflushedPosts = true;
    d_->onThread([bus = d_->bus, name] { bus->post(name); });
}

void DistributedNotificationCenter::addObserver(const QString &name, std::function<void()> handler)
{
    d_->observers->add(name, std::move(handler));
    d_->onThread([bus = d_->bus, name] { bus->listen(name); });
}

bool DistributedNotificationCenter::flush(std::chrono::milliseconds timeout)
{
    struct Outcome
    {
        QSemaphore isKnown;
        bool allTaken = false;
    };
    const auto outcome = std::make_shared<Outcome>();
    d_->onThread([bus = d_->bus, outcome, timeout] {
        outcome->allTaken = bus->roundTrip(timeout);
        outcome->isKnown.release();
    });
    d_->hasUnflushedPosts = false;
    return outcome->isKnown.tryAcquire(1, int(timeout.count())) && outcome->allTaken;
}
