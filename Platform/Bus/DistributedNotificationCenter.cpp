// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/DistributedNotificationCenter.h"

#include "Platform/Bus/SessionBus.h"

#include <QDBusMessage>

#include <utility>

namespace {

const QString objectPath = QStringLiteral("/org/quenby/DistributedNotificationCenter");
const QString interfaceName = QStringLiteral("org.quenby.DistributedNotificationCenter");

} // namespace

DistributedNotificationCenter::DistributedNotificationCenter(std::shared_ptr<SessionBus> bus)
    : bus_(std::move(bus))
{
}

void DistributedNotificationCenter::postNotificationName(const QString &name)
{
    bus_->send(QDBusMessage::createSignal(objectPath, interfaceName, name));
}

void DistributedNotificationCenter::addObserver(const QString &name, const std::function<void()> &handler)
{
    bus_->listen({{}, objectPath, interfaceName, name},
                 mailbox_.bound<const QDBusMessage &>([handler](const QDBusMessage &) { handler(); }));
}

bool DistributedNotificationCenter::flush(std::chrono::milliseconds timeout)
{
    return bus_->flush(timeout);
}
