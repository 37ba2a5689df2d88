// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/Running/FakeGlobalAccel.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>

#include <gtest/gtest.h>

/// A key sequence on the bus.
struct FakeGlobalAccelKeys
{
    QList<int> keys;
};
Q_DECLARE_METATYPE(FakeGlobalAccelKeys)

QDBusArgument &operator<<(QDBusArgument &argument, const FakeGlobalAccelKeys &sequence)
{
    argument.beginStructure();
    argument << sequence.keys;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FakeGlobalAccelKeys &sequence)
{
    argument.beginStructure();
    argument >> sequence.keys;
    argument.endStructure();
    return argument;
}

namespace {

const QString accelPath = QStringLiteral("/kglobalaccel");
const QString componentPath = QStringLiteral("/component/org_quenby_QNBHelper");

} // namespace

const QString FakeGlobalAccel::ownConnection = QStringLiteral("fake-global-accel");

FakeGlobalAccel::FakeGlobalAccel(const QString &busAddress, Manner manner, Program program)
    : manner_(manner)
{
    qDBusRegisterMetaType<FakeGlobalAccelKeys>();
    qDBusRegisterMetaType<QList<FakeGlobalAccelKeys>>();
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, ownConnection);
    EXPECT_TRUE(connection.registerVirtualObject(accelPath, this));
    if (program == Program::Compositor)
        becomeCompositor();
    EXPECT_TRUE(connection.registerService(QStringLiteral("org.kde.kglobalaccel")));
}

FakeGlobalAccel::~FakeGlobalAccel()
{
    QDBusConnection::disconnectFromBus(ownConnection);
}

void FakeGlobalAccel::becomeCompositor()
{
    EXPECT_TRUE(QDBusConnection(ownConnection).registerService(QStringLiteral("org.kde.KWin")));
}

bool FakeGlobalAccel::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const QList<QVariant> arguments = message.arguments();
    if (message.member() == u"doRegister") {
        EXPECT_EQ(message.signature(), QStringLiteral("as"));
        action_ = arguments.value(0).toStringList();
        connection.send(manner_ == Manner::Failing
                            ? message.createErrorReply(QDBusError::Failed, QStringLiteral("not now"))
                            : message.createReply());
        return true;
    }
    if (message.member() == u"unregister") {
        EXPECT_EQ(arguments.value(0).toString(), action_.value(0));
        EXPECT_EQ(arguments.value(1).toString(), action_.value(1));
        key_ = 0;
        action_.clear();
        connection.send(message.createReply(true));
        return true;
    }
    if (message.member() != u"setShortcutKeys")
        return false;
    EXPECT_EQ(message.signature(), QStringLiteral("asa(ai)u"));
    EXPECT_EQ(arguments.value(0).toStringList(), action_);
    constexpr uint setPresentWithoutAutoloading = 6;
    EXPECT_EQ(arguments.value(2).toUInt(), setPresentWithoutAutoloading);
    auto sequences = qdbus_cast<QList<FakeGlobalAccelKeys>>(arguments.value(1));
    EXPECT_LE(sequences.size(), 1);
    for (const FakeGlobalAccelKeys &sequence : sequences)
        EXPECT_EQ(sequence.keys.size(), 4);
    if (manner_ == Manner::Giving)
        key_ = sequences.value(0).keys.value(0);
    else
        sequences.clear();
    connection.send(message.createReply(QVariant::fromValue(sequences)));
    return true;
}

void FakeGlobalAccel::press(const QString &connectionName)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(componentPath, QStringLiteral("org.kde.kglobalaccel.Component"),
                                   QStringLiteral("globalShortcutPressed"));
    signal << action_.value(0) << action_.value(1) << qlonglong(1);
    EXPECT_TRUE(QDBusConnection(connectionName).send(signal));
}
