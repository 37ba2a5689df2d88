// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/FakeTray.h"

#include "Tests/Session/ChildProcess.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>

namespace {

const QString connectionName = QStringLiteral("fake-tray");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString getMember = QStringLiteral("Get");

FakeTray::Entry entryOf(const QDBusArgument &argument)
{
    FakeTray::Entry entry;
    QVariantMap properties;
    argument.beginStructure();
    argument >> entry.id >> properties;
    entry.label = properties.value(QStringLiteral("label")).toString();
    entry.isEnabled = properties.value(QStringLiteral("enabled"), true).toBool();
    entry.isSeparator = properties.value(QStringLiteral("type")).toString() == u"separator";
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(entryOf(child.variant().value<QDBusArgument>()));
    }
    argument.endArray();
    argument.endStructure();
    return entry;
}

} // namespace

QStringList FakeTray::Entry::labels() const
{
    QStringList result;
    for (const Entry &entry : children)
        result.append(entry.isSeparator ? QStringLiteral("-") : entry.label);
    return result;
}

FakeTray::Entry FakeTray::Entry::child(const QString &childLabel) const
{
    for (const Entry &entry : children) {
        if (entry.label == childLabel)
            return entry;
    }
    return {};
}

FakeTray::FakeTray(const QString &busAddress, std::optional<bool> hasHost)
    : hasHost_(hasHost)
{
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, connectionName);
    if (!connection.registerVirtualObject(watcherPath, this) || !connection.registerService(watcherService))
        qFatal("no tray: %s", qPrintable(connection.lastError().message()));
}

FakeTray::~FakeTray()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

void FakeTray::addHost()
{
    hasHost_ = true;
    QDBusConnection(connectionName)
        .send(QDBusMessage::createSignal(watcherPath, watcherService,
                                         QStringLiteral("StatusNotifierHostRegistered")));
}

QString FakeTray::introspect(const QString &) const
{
    return QStringLiteral(
        "<interface name=\"org.kde.StatusNotifierWatcher\">"
        "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
        "<method name=\"RegisterStatusNotifierItem\"><arg type=\"s\" direction=\"in\"/></method>"
        "</interface>");
}

bool FakeTray::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (message.member() == getMember) {
        if (hasHost_)
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(*hasHost_))));
        return true;
    }
    if (message.member() != u"RegisterStatusNotifierItem")
        return false;
    items_.append(message.arguments().value(0).toString());
    connection.send(message.createReply());
    return true;
}

bool FakeTray::hasItem() const
{
    return !items_.isEmpty() &&
           QDBusConnection(connectionName).interface()->isServiceRegistered(items_.constLast());
}

QDBusMessage FakeTray::ask(const QString &path, const QString &interface, const QString &member,
                           const QVariantList &arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(items_.value(items_.size() - 1), path, interface, member);
    message.setArguments(arguments);
    // The program may be asking us meanwhile. (A call that blocks with an event loop waits for ever if the
    // answer comes before the loop has begun.)
    const QDBusPendingCall answer = QDBusConnection(connectionName).asyncCall(message);
    waitUntil([&] { return answer.isFinished(); });
    return answer.reply();
}

FakeTray::Entry FakeTray::menu()
{
    if (!hasItem())
        return {};
    const QDBusReply<QDBusVariant> path =
        ask(itemPath, propertiesInterface, getMember, {itemInterface, QStringLiteral("Menu")});
    if (!path.isValid())
        return {};
    const QString menuPath = path.value().variant().value<QDBusObjectPath>().path();
    constexpr int root = 0;
    constexpr int everyLevel = -1;
    ask(menuPath, menuInterface, QStringLiteral("AboutToShow"), {root});
    const QDBusMessage layout =
        ask(menuPath, menuInterface, QStringLiteral("GetLayout"), {root, everyLevel, QStringList()});
    return layout.arguments().size() == 2 ? entryOf(layout.arguments().at(1).value<QDBusArgument>())
                                          : Entry();
}

FakeTray::Entry FakeTray::menuWith(const QString &label)
{
    Entry result;
    waitUntil([&] {
        result = menu();
        return result.labels().contains(label);
    });
    return result;
}

void FakeTray::activate()
{
    constexpr int anywhere = 0;
    const QDBusMessage answer =
        ask(itemPath, itemInterface, QStringLiteral("Activate"), {anywhere, anywhere});
    if (answer.type() != QDBusMessage::ReplyMessage)
        qWarning("the item is not clicked: %s", qPrintable(answer.errorMessage()));
}

void FakeTray::click(const Entry &entry)
{
    const QDBusReply<QDBusVariant> path =
        ask(itemPath, propertiesInterface, getMember, {itemInterface, QStringLiteral("Menu")});
    const QDBusMessage answer =
        ask(path.value().variant().value<QDBusObjectPath>().path(), menuInterface, QStringLiteral("Event"),
            {entry.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    if (answer.type() != QDBusMessage::ReplyMessage)
        qWarning("the menu is not clicked: %s", qPrintable(answer.errorMessage()));
}
