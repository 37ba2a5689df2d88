// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/Running/FakePortal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>

#include <gtest/gtest.h>
#include <utility>

/// A shortcut on the bus.
struct FakePortalShortcut
{
    QString id;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(FakePortalShortcut)

QDBusArgument &operator<<(QDBusArgument &argument, const FakePortalShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FakePortalShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace {

const QString portalConnection = QStringLiteral("fake-portal");
const QString anotherShortcut = QStringLiteral("another one");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
constexpr uint granted = 0;
constexpr uint cancelled = 1;
constexpr uint failed = 2;

QString senderOf(const QDBusMessage &message)
{
    return message.service().mid(1).replace(u'.', u'_');
}

FakePortalShortcut described(const QString &id, const QString &keys)
{
    return {id, {{QStringLiteral("trigger_description"), keys}}};
}

QDBusObjectPath requestOf(const QDBusMessage &message, const QVariantMap &options)
{
    return QDBusObjectPath(portalPath + QStringLiteral("/request/") + senderOf(message) + u'/' +
                           options.value(QStringLiteral("handle_token")).toString());
}

} // namespace

FakePortal::FakePortal(const QString &busAddress, Manner manner)
    : manner_(manner)
{
    qDBusRegisterMetaType<FakePortalShortcut>();
    qDBusRegisterMetaType<QList<FakePortalShortcut>>();
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, portalConnection);
    EXPECT_TRUE(connection.registerVirtualObject(portalPath, this, QDBusConnection::SubPath));
    EXPECT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
}

FakePortal::~FakePortal()
{
    QDBusConnection::disconnectFromBus(portalConnection);
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (manner_ == Manner::Unknown)
        return false;
    const QList<QVariant> arguments = message.arguments();
    if (message.member() == u"Close") {
        EXPECT_EQ(message.path(), session_);
        session_.clear();
        connection.send(message.createReply());
        return true;
    }
    if (message.interface() == u"org.freedesktop.host.portal.Registry") {
        if (manner_ == Manner::WithoutRegistry)
            return false;
        EXPECT_EQ(message.member(), QStringLiteral("Register"));
        EXPECT_EQ(message.signature(), QStringLiteral("sa{sv}"));
        EXPECT_TRUE(session_.isEmpty()) << "it comes first";
        application_ = arguments.value(0).toString();
        connection.send(message.createReply());
        return true;
    }
    // The library asks the portal for other things by itself.
    if (message.interface() != u"org.freedesktop.portal.GlobalShortcuts")
        return false;
    if (message.member() == u"CreateSession") {
        EXPECT_EQ(message.signature(), QStringLiteral("a{sv}"));
        const auto options = qdbus_cast<QVariantMap>(arguments.value(0));
        if (manner_ == Manner::Failing) {
            answer(message, options, failed, {}, connection);
            return true;
        }
        sessionToken_ = options.value(QStringLiteral("session_handle_token")).toString();
        const QString path =
            portalPath + QStringLiteral("/session/") + senderOf(message) + u'/' + sessionToken_;
        if (path == session_) {
            connection.send(
                message.createErrorReply(QDBusError::Failed, QStringLiteral("this session exists")));
            return true;
        }
        session_ = path;
        if (manner_ == Manner::OpeningSilently)
            return true;
        answer(message, options, granted, {{QStringLiteral("session_handle"), session_}}, connection);
        return true;
    }
    EXPECT_EQ(message.member(), QStringLiteral("BindShortcuts"));
    EXPECT_EQ(message.signature(), QStringLiteral("oa(sa{sv})sa{sv}"));
    EXPECT_EQ(arguments.value(0).value<QDBusObjectPath>().path(), session_);
    const auto options = qdbus_cast<QVariantMap>(arguments.value(3));
    ++bindings_;
    askedAt_ = std::chrono::steady_clock::now();
    if (manner_ == Manner::Asking) {
        connection.send(message.createReply(QVariant::fromValue(requestOf(message, options))));
        return true;
    }
    if (manner_ == Manner::Dying) {
        QMetaObject::invokeMethod(
            this, [] { QDBusConnection::disconnectFromBus(portalConnection); }, Qt::QueuedConnection);
        return true;
    }
    if (manner_ == Manner::UnableToAsk) {
        connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("there is no screen")));
        return true;
    }
    if (manner_ == Manner::Cancelling || manner_ == Manner::FailingToAsk) {
        answer(message, options, manner_ == Manner::Cancelling ? cancelled : failed, {}, connection);
        return true;
    }
    const auto shortcuts = arguments.value(1).value<QDBusArgument>();
    shortcuts.beginArray();
    shortcuts.beginStructure();
    shortcuts >> shortcut_ >> options_;
    shortcuts.endStructure();
    EXPECT_TRUE(shortcuts.atEnd());
    shortcuts.endArray();
    const bool hasWrongNumber =
        manner_ == Manner::GrantingWithWrongNumber || manner_ == Manner::CancellingWithWrongNumber;
    const bool hasNoKeys =
        manner_ == Manner::GrantingWithoutKeys || manner_ == Manner::CancellingWithWrongNumber;
    const FakePortalShortcut bound = described(
        manner_ == Manner::GrantingNothing ? anotherShortcut : shortcut_, hasNoKeys ? QString() : givenKeys);
    answer(message, options, hasWrongNumber ? failed : granted,
           {{QStringLiteral("shortcuts"), QVariant::fromValue(QList<FakePortalShortcut>{bound})}},
           connection);
    return true;
}

void FakePortal::answer(const QDBusMessage &message, const QVariantMap &options, uint response,
                        const QVariantMap &results, const QDBusConnection &connection)
{
    const QDBusObjectPath request = requestOf(message, options);
    // A quick answer comes before the reply.
    QDBusMessage signal = QDBusMessage::createSignal(
        request.path(), QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    signal << response << results;
    EXPECT_TRUE(connection.send(signal));
    EXPECT_TRUE(connection.send(message.createReply(QVariant::fromValue(request))));
}

QDBusMessage FakePortal::activation(const QString &shortcut) const
{
    QDBusMessage signal = QDBusMessage::createSignal(
        portalPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"), QStringLiteral("Activated"));
    signal << QVariant::fromValue(QDBusObjectPath(session_)) << shortcut << qulonglong(1)
           << QVariantMap{{QStringLiteral("activation_token"), activationToken}};
    return signal;
}

void FakePortal::activate(const QString &shortcut)
{
    EXPECT_TRUE(QDBusConnection(portalConnection).send(activation(shortcut)));
}

void FakePortal::changeKeys(const QString &keys)
{
    sayShortcutsAre({described(anotherShortcut, givenKeys), described(shortcut_, keys)});
}

void FakePortal::takeShortcutAway()
{
    sayShortcutsAre({described(anotherShortcut, givenKeys)});
}

void FakePortal::sayShortcutsAre(const QList<FakePortalShortcut> &shortcuts)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(portalPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                   QStringLiteral("ShortcutsChanged"));
    signal << QVariant::fromValue(QDBusObjectPath(session_)) << QVariant::fromValue(shortcuts);
    EXPECT_TRUE(QDBusConnection(portalConnection).send(signal));
}

void FakePortal::closeSession()
{
    const QString session = std::exchange(session_, {});
    EXPECT_TRUE(
        QDBusConnection(portalConnection)
            .send(QDBusMessage::createSignal(session, QStringLiteral("org.freedesktop.portal.Session"),
                                             QStringLiteral("Closed"))));
}
