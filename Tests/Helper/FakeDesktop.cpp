// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/FakeDesktop.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <gtest/gtest.h>
#include <utility>

namespace {

const QString connectionName = QStringLiteral("fake-desktop");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
const QString interfaceName = QStringLiteral("org.freedesktop.Notifications");

} // namespace

FakeDesktop::FakeDesktop(const QString &busAddress, QStringList capabilities, Manner manner)
    : capabilities_(std::move(capabilities))
    , manner_(manner)
{
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, connectionName);
    EXPECT_TRUE(connection.registerVirtualObject(objectPath, this));
    EXPECT_TRUE(connection.registerService(interfaceName));
}

FakeDesktop::~FakeDesktop()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

bool FakeDesktop::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (manner_ == Manner::Silent)
        return true;
    if (manner_ == Manner::Refusing) {
        connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("no")));
        return true;
    }
    if (message.member() == u"GetCapabilities") {
        connection.send(message.createReply(QVariant(capabilities_)));
        return true;
    }
    EXPECT_EQ(message.member(), QStringLiteral("Notify"));
    EXPECT_EQ(message.signature(), QStringLiteral("susssasa{sv}i"));
    const QList<QVariant> arguments = message.arguments();
    const uint id = uint(shown_.size()) + 7;
    shown_.append({arguments.value(0).toString(), arguments.value(3).toString(),
                   arguments.value(4).toString(), arguments.value(5).toStringList(), id});
    connection.send(message.createReply(id));
    return true;
}

void FakeDesktop::send(const QString &signal, const QList<QVariant> &arguments)
{
    QDBusMessage message = QDBusMessage::createSignal(objectPath, interfaceName, signal);
    message.setArguments(arguments);
    EXPECT_TRUE(QDBusConnection(connectionName).send(message));
}

void FakeDesktop::choose(uint id, const QString &action)
{
    send(QStringLiteral("ActionInvoked"), {id, action});
}

void FakeDesktop::close(uint id)
{
    constexpr uint byTheUser = 2;
    send(QStringLiteral("NotificationClosed"), {id, byTheUser});
}
