// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QObject>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

/// Has functions called on the event loop of the thread that made it, whichever thread wants them called, and
/// only as long as it lives.
class Mailbox
{
public:
    Mailbox() = default;
    ~Mailbox()
    {
        const QMutexLocker lock(&shared_->mutex);
        // With it go the calls that it has not made yet.
        shared_->receiver.reset();
    }
    Mailbox(const Mailbox &) = delete;
    Mailbox &operator=(const Mailbox &) = delete;

    /// What other threads may call, with copies of its arguments, to have \a handler called here. It may
    /// outlive the mailbox.
    template <typename... Arguments>
    std::function<void(Arguments...)>
    bound(std::type_identity_t<std::function<void(Arguments...)>> handler) const
    {
        return [shared = shared_, handler = std::move(handler)](Arguments... arguments) {
            const QMutexLocker lock(&shared->mutex);
            if (shared->receiver)
                QMetaObject::invokeMethod(
                    shared->receiver.get(), [handler, arguments...] { handler(arguments...); },
                    Qt::QueuedConnection);
        };
    }

private:
    struct Shared
    {
        QMutex mutex;
        std::unique_ptr<QObject> receiver = std::make_unique<QObject>();
    };
    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};
