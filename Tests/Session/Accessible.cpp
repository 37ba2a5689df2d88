// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/Accessible.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEventLoop>

namespace {

const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
const QString componentInterface = QStringLiteral("org.a11y.atspi.Component");
const QString textInterface = QStringLiteral("org.a11y.atspi.Text");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
/// "Relative to the screen".
constexpr uint screenCoordinates = 0;
constexpr int bitsOfAStateWord = 32;
/// A loaded machine answers late.
constexpr int callTimeout = 10000;

QVariant firstArgument(const QDBusMessage &reply)
{
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

} // namespace

Accessible::Accessible(const QDBusConnection &bus, const QString &service, const QString &path)
    : bus_(bus)
    , service_(service)
    , path_(path)
{
}

QDBusMessage Accessible::call(const QString &interface, const QString &member,
                              const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service_, path_, interface, member);
    message.setArguments(arguments);
    // Who is asked may itself wait for something that this process plays, such as a tray.
    QDBusPendingCallWatcher answer(bus_.asyncCall(message, callTimeout));
    QEventLoop loop;
    QObject::connect(&answer, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    if (!answer.isFinished())
        loop.exec();
    return answer.reply();
}

QString Accessible::name() const
{
    const QVariant reply = firstArgument(
        call(propertiesInterface, QStringLiteral("Get"), {accessibleInterface, QStringLiteral("Name")}));
    return reply.value<QDBusVariant>().variant().toString();
}

QString Accessible::role() const
{
    return firstArgument(call(accessibleInterface, QStringLiteral("GetRoleName"))).toString();
}

QString Accessible::text() const
{
    return firstArgument(call(textInterface, QStringLiteral("GetText"), {0, -1})).toString();
}

QRect Accessible::extents() const
{
    const QVariant reply =
        firstArgument(call(componentInterface, QStringLiteral("GetExtents"), {screenCoordinates}));
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    if (reply.canConvert<QDBusArgument>()) {
        const auto rectangle = reply.value<QDBusArgument>();
        rectangle.beginStructure();
        rectangle >> x >> y >> width >> height;
        rectangle.endStructure();
    }
    return {x, y, width, height};
}

bool Accessible::has(State state) const
{
    const QVariant reply = firstArgument(call(accessibleInterface, QStringLiteral("GetState")));
    QList<uint> words;
    if (reply.canConvert<QDBusArgument>())
        reply.value<QDBusArgument>() >> words;
    const int bit = int(state);
    return ((words.value(bit / bitsOfAStateWord) >> (bit % bitsOfAStateWord)) & 1U) != 0;
}

QList<Accessible> Accessible::children() const
{
    QList<Accessible> result;
    const QVariant reply = firstArgument(call(accessibleInterface, QStringLiteral("GetChildren")));
    if (!reply.canConvert<QDBusArgument>())
        return result;
    const auto references = reply.value<QDBusArgument>();
    references.beginArray();
    while (!references.atEnd()) {
        QString service;
        QDBusObjectPath path;
        references.beginStructure();
        references >> service >> path;
        references.endStructure();
        result.append(Accessible(bus_, service, path.path()));
    }
    references.endArray();
    return result;
}

std::optional<Accessible> Accessible::find(const QString &role, const QString &name) const
{
    const QList<Accessible> below = children();
    for (const Accessible &child : below) {
        if (child.role() == role && child.name() == name)
            return child;
        if (const auto found = child.find(role, name))
            return found;
    }
    return std::nullopt;
}

QList<Accessible> Accessible::findAll(const QString &role) const
{
    QList<Accessible> result;
    const QList<Accessible> below = children();
    for (const Accessible &child : below) {
        if (child.role() == role)
            result.append(child);
        result.append(child.findAll(role));
    }
    return result;
}
