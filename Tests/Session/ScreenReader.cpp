// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ScreenReader.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusReply>
#include <QUuid>

namespace {

const QString launcherService = QStringLiteral("org.a11y.Bus");
const QString launcherPath = QStringLiteral("/org/a11y/bus");
const QString registryService = QStringLiteral("org.a11y.atspi.Registry");
const QString registryPath = QStringLiteral("/org/a11y/atspi/registry");
const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString objectEvents = QStringLiteral("org.a11y.atspi.Event.Object");
const QString focusedState = QStringLiteral("focused");

} // namespace

ScreenReader::ScreenReader(const QString &busAddress, QProcessEnvironment environment)
    : connectionName_(QUuid::createUuid().toString())
{
    // It finds its settings' schemas where the system has them.
    environment.remove(QStringLiteral("XDG_DATA_DIRS"));
    launcher_ =
        std::make_unique<ChildProcess>(QStringLiteral(QUENBY_ACCESSIBILITY_BUS), QStringList(), environment);
    // Only to learn the address of the other bus.
    const QString sessionName = QUuid::createUuid().toString();
    QString address;
    {
        const QDBusConnection session = QDBusConnection::connectToBus(busAddress, sessionName);
        waitUntil([&] {
            const QDBusReply<QString> reply = session.call(QDBusMessage::createMethodCall(
                launcherService, launcherPath, launcherService, QStringLiteral("GetAddress")));
            address = reply.value();
            return !address.isEmpty();
        });
    }
    QDBusConnection::disconnectFromBus(sessionName);
    bus_ = QDBusConnection::connectToBus(address, connectionName_);
    if (!bus_.isConnected())
        qFatal("no accessibility bus: %s", launcher_->errors().constData());
    bus_.connect(QString(), QString(), objectEvents, QStringLiteral("StateChanged"), this,
                 SLOT(stateChanged(QDBusMessage)));
    // Programs are silent about what nobody asked for.
    QDBusMessage registration = QDBusMessage::createMethodCall(registryService, registryPath, registryService,
                                                               QStringLiteral("RegisterEvent"));
    registration.setArguments({QStringLiteral("object:state-changed:focused")});
    const QDBusMessage registered = bus_.call(registration);
    if (registered.type() != QDBusMessage::ReplyMessage)
        qFatal("no events: %s", qPrintable(registered.errorMessage()));
}

ScreenReader::~ScreenReader()
{
    bus_ = QDBusConnection(QString());
    focus_ = Accessible();
    QDBusConnection::disconnectFromBus(connectionName_);
}

QList<Accessible> ScreenReader::programs() const
{
    return Accessible(bus_, registryService, rootPath).children();
}

void ScreenReader::stateChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).toString() == focusedState && arguments.value(1).toInt() != 0)
        focus_ = Accessible(bus_, message.service(), message.path());
}

void ScreenReader::catchUp()
{
    // An answer of the program comes after what it said before.
    focus_.name();
    QCoreApplication::processEvents();
}
