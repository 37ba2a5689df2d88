// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/HelperService.h"

#include "Platform/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

#include <chrono>

using namespace std::chrono_literals;

namespace {

/// A bus that is there answers within a millisecond or two.
constexpr auto busTimeout = 300ms;
/// In milliseconds. The helper answers when it has understood, not when it is done.
constexpr int answerTimeout = 10'000;

const QString connectionName = QStringLiteral("quenby-helper-service");

HelperService::Answer ask(const QDBusConnection &bus, const QString &method, const QVariantList &arguments,
                          QString *error)
{
    using HelperService::Answer;
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(HelperService::name))
        return Answer::NotRunning;
    QDBusMessage message = QDBusMessage::createMethodCall(HelperService::name, HelperService::path,
                                                          HelperService::interfaceName, method);
    message.setAutoStartService(false);
    message.setArguments(arguments);
    const QDBusMessage reply = bus.call(message, QDBus::Block, answerTimeout);
    if (reply.type() != QDBusMessage::ErrorMessage)
        return Answer::Taken;
    *error = reply.errorMessage();
    switch (QDBusError(reply).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
        return Answer::NotRunning;
    case QDBusError::InvalidArgs:
        return Answer::NotUnderstood;
    default:
        return Answer::Failed;
    }
}

HelperService::Answer ask(const QString &busAddress, const QString &method, const QVariantList &arguments,
                          QString *error)
{
    // The library waits half a minute for a bus that says nothing.
    if (SessionBus::ask(busAddress, busTimeout) != SessionBus::Answer::Yes)
        return HelperService::Answer::NoBus;
    const HelperService::Answer answer =
        ask(QDBusConnection::connectToBus(busAddress, connectionName), method, arguments, error);
    QDBusConnection::disconnectFromBus(connectionName);
    return answer;
}

} // namespace

HelperService::Answer HelperService::create(const Preset &preset, const QStringList &folders,
                                            const QString &busAddress, QString *error)
{
    return ask(busAddress, createMethod, {preset.label, preset.position.value_or(0), folders}, error);
}

HelperService::Answer HelperService::showMenu(const QStringList &folders, const QString &busAddress,
                                              QString *error)
{
    return ask(busAddress, showMenuMethod, {folders}, error);
}
