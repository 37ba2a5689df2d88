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

HelperService::Answer ask(const QDBusConnection &bus, const QString &preset, const QStringList &folders,
                          QString *error)
{
    using HelperService::Answer;
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(HelperService::name))
        return Answer::NotRunning;
    QDBusMessage message = QDBusMessage::createMethodCall(
        HelperService::name, HelperService::path, HelperService::interfaceName, HelperService::createMethod);
    message.setAutoStartService(false);
    message << preset << folders;
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

} // namespace

HelperService::Answer HelperService::create(const QString &preset, const QStringList &folders,
                                            const QString &busAddress, QString *error)
{
    // The library waits half a minute for a bus that says nothing.
    if (SessionBus::ask(busAddress, busTimeout) != SessionBus::Answer::Yes)
        return Answer::NotRunning;
    const Answer answer =
        ask(QDBusConnection::connectToBus(busAddress, connectionName), preset, folders, error);
    QDBusConnection::disconnectFromBus(connectionName);
    return answer;
}
