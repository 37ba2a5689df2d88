// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/HelperService.h"

#include "Helper/Presets.h"
#include "Platform/Bus/SessionBus.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QSemaphore>

#include <memory>

using namespace std::chrono_literals;

namespace {

/// The helper answers when it has understood, not when it is done.
constexpr auto answerTimeout = 10s;
/// More than the answer can take, or the error in its place.
constexpr auto longestWait = answerTimeout + 2 * SessionBus::answerTimeout;

/// What the bus says of a name that nobody has, if it is not to start a program for it.
const QString noOwnerError = QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner");
/// How the names of its errors begin if it was to, and the program did not start or ended.
const QString notStartedError = QStringLiteral("org.freedesktop.DBus.Error.Spawn.");

/// If nobody has the name.
enum class Activation { None, ByTheBus };

HelperService::Answer ask(SessionBus &bus, const QString &service, const QString &method,
                          const QVariantList &arguments, Activation activation, QString *error)
{
    using HelperService::Answer;
    QDBusMessage message =
        QDBusMessage::createMethodCall(service, HelperService::path, HelperService::interfaceName, method);
    message.setAutoStartService(activation == Activation::ByTheBus);
    message.setArguments(arguments);

    struct Outcome
    {
        QSemaphore isKnown;
        QDBusMessage reply;
    };
    const auto outcome = std::make_shared<Outcome>();
    bus.call(message, answerTimeout, [outcome](const QDBusMessage &reply) {
        outcome->reply = reply;
        outcome->isKnown.release();
    });
    if (!outcome->isKnown.tryAcquire(1, int(std::chrono::milliseconds(longestWait).count()))) {
        *error = QStringLiteral("The session bus does not answer");
        return Answer::Failed;
    }
    if (outcome->reply.type() != QDBusMessage::ErrorMessage)
        return Answer::Taken;
    *error = outcome->reply.errorMessage();
    if (outcome->reply.errorName() == noOwnerError || outcome->reply.errorName().startsWith(notStartedError))
        return Answer::NotRunning;
    if (outcome->reply.errorName() == SessionBus::notSentError)
        return Answer::NoBus;
    switch (QDBusError(outcome->reply).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
        return Answer::NotRunning;
    case QDBusError::InvalidArgs:
        return Answer::NotUnderstood;
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::Disconnected:
        return Answer::Failed;
    default:
        return Answer::Refused;
    }
}

} // namespace

HelperService::Answer HelperService::create(SessionBus &bus, const Preset &preset, const QStringList &folders,
                                            QString *error)
{
    const QVariantList arguments = {preset.label, preset.position.value_or(0), folders};
    const Answer answer = ask(bus, name, createMethod, arguments, Activation::None, error);
    return answer == Answer::NotRunning && helperIsWanted()
               ? ask(bus, name, createMethod, arguments, Activation::ByTheBus, error)
               : answer;
}

HelperService::Answer HelperService::showLauncher(SessionBus &bus, const QStringList &folders,
                                                  const QByteArray &activationToken, QString *error)
{
    const QVariantList arguments = {folders, QString::fromUtf8(activationToken)};
    const Answer answer = ask(bus, name, showLauncherMethod, arguments, Activation::None, error);
    return answer == Answer::NotRunning
               ? ask(bus, launcherName, showLauncherMethod, arguments, Activation::None, error)
               : answer;
}
