// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/SessionBus.h"

#include "Platform/Bus/BusConnection.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <utility>

namespace {

/// In milliseconds. How long the destructor waits for calls that are under way; they are given up after that.
constexpr int answerTime = 500;
/// In milliseconds. How long the thread may then take to end. It is only ever used up if a bus falls silent
/// between answering us and answering the library; the thread is then left behind.
constexpr int threadEndTimeout = 500;

} // namespace

class SessionBus::Private
{
public:
    std::unique_ptr<QThread> thread = std::make_unique<QThread>();
    /// Lives on the thread, and is destroyed there.
    BusConnection *connection;
    std::atomic<bool> hasUnflushedSignals = false;
    std::atomic<bool> isClosed = false;

    explicit Private(QString address)
        : connection(new BusConnection(std::move(address)))
    {
        thread->setObjectName(QStringLiteral("session bus"));
        connection->moveToThread(thread.get());
        QObject::connect(thread.get(), &QThread::finished, connection, &QObject::deleteLater);
        thread->start();
    }

    template <typename Action>
    void onThread(Action action)
    {
        if (!isClosed)
            QMetaObject::invokeMethod(connection, std::move(action), Qt::QueuedConnection);
    }
};

SessionBus::SessionBus(QString address)
    : d_(std::make_unique<Private>(std::move(address)))
{
}

SessionBus::~SessionBus()
{
    close();
}

void SessionBus::close()
{
    if (d_->isClosed)
        return;
    if (d_->hasUnflushedSignals)
        flush();
    d_->onThread([connection = d_->connection] { connection->endThreadWhenAnswered(); });
    d_->isClosed = true;
    if (d_->thread->wait(answerTime))
        return;
    d_->thread->quit();
    if (!d_->thread->wait(threadEndTimeout))
        static_cast<void>(d_->thread.release());
}

void SessionBus::send(const QDBusMessage &signal)
{
    d_->hasUnflushedSignals = true;
    d_->onThread([connection = d_->connection, signal] { connection->send(signal); });
}

void SessionBus::call(const QDBusMessage &message, std::chrono::milliseconds timeout, Received answered)
{
    d_->onThread([connection = d_->connection, message, timeout, answered = std::move(answered)] {
        connection->call(message, timeout, answered);
    });
}

void SessionBus::listen(const Signal &signal, Received received)
{
    d_->onThread([connection = d_->connection, signal, received = std::move(received)] {
        connection->listen(signal, received);
    });
}

void SessionBus::watch(Changed changed)
{
    d_->onThread([connection = d_->connection, changed = std::move(changed)] { connection->watch(changed); });
}

SessionBus::Signal SessionBus::ownerChange(const QString &name)
{
    return {QStringLiteral("org.freedesktop.DBus"),
            QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"),
            QStringLiteral("NameOwnerChanged"),
            {name}};
}

void SessionBus::watchOwner(const QString &name, const std::function<void()> &changed)
{
    listen(ownerChange(name), [changed](const QDBusMessage &) { changed(); });
    watch([changed](const std::optional<QDBusConnection> &) { changed(); });
}

bool SessionBus::flush(std::chrono::milliseconds timeout)
{
    if (d_->isClosed)
        return false;
    struct Outcome
    {
        QSemaphore isKnown;
        std::atomic<bool> allTaken = false;
    };
    const auto outcome = std::make_shared<Outcome>();
    d_->hasUnflushedSignals = false;
    d_->onThread([connection = d_->connection, outcome, timeout] {
        connection->roundTrip(timeout, [outcome](bool allTaken) {
            outcome->allTaken = allTaken;
            outcome->isKnown.release();
        });
    });
    return outcome->isKnown.tryAcquire(1, int(timeout.count())) && outcome->allTaken;
}
