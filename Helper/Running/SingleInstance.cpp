// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/SingleInstance.h"

#include "Platform/Bus/SessionBus.h"
#include "Platform/Files/FileLayer.h"

#include <QDBusMessage>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcInstance, "quenby.helper.instance")

const QString lockName = QStringLiteral("/quenby-helper.lock");

/// What the bus is asked for with a name, and what it answers.
constexpr uint doNotQueue = 4;
constexpr uint isOwner = 1;
constexpr uint wasOwner = 4;

QDBusMessage busCall(const QString &method)
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    return QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
}

} // namespace

SingleInstance::SingleInstance(std::shared_ptr<SessionBus> bus, const QString &name)
    : bus_(std::move(bus))
    , name_(name)
{
}

SingleInstance::~SingleInstance()
{
    release();
}

bool SingleInstance::acquire(const QString &runtimeFolder)
{
    if (runtimeFolder.isEmpty())
        return true;
    constexpr int withoutWaiting = 0;
    Result<FileLock> lock = FileLock::acquire(FileLayer::real(), runtimeFolder + lockName, withoutWaiting);
    if (lock)
        lock_.emplace(std::move(*lock));
    else
        // Held by another helper, or not to be had at all.
        qCWarning(lcInstance) << "not started:" << lock.error;
    return lock_.has_value();
}

void SingleInstance::claimName(const std::function<void()> &isTaken)
{
    bus_->call(busCall(QStringLiteral("RequestName")) << name_ << doNotQueue, SessionBus::answerTimeout,
               mailbox_.bound<const QDBusMessage &>([isTaken](const QDBusMessage &reply) {
                   if (reply.type() == QDBusMessage::ErrorMessage) {
                       qCWarning(lcInstance)
                           << "without its name on the session bus:" << reply.errorMessage();
                       return;
                   }
                   const uint answer = reply.arguments().value(0).toUInt();
                   if (answer == isOwner || answer == wasOwner)
                       return;
                   qCWarning(lcInstance) << "another process has the name on the session bus";
                   isTaken();
               }));
}

void SingleInstance::release()
{
    bus_->call(busCall(QStringLiteral("ReleaseName")) << name_, SessionBus::answerTimeout,
               [](const QDBusMessage &) {});
    lock_.reset();
}
