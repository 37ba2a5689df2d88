// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/GlobalAccelHotKey.h"

#include "Keyboard/LayoutKeys.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <array>
#include <utility>

/// A key sequence as the service wants it: always as many keys as a sequence can have, 0 for none.
struct GlobalAccelKeys
{
    static constexpr size_t length = 4;
    std::array<int, length> keys = {};
};
Q_DECLARE_METATYPE(GlobalAccelKeys)

QDBusArgument &operator<<(QDBusArgument &argument, const GlobalAccelKeys &sequence)
{
    argument.beginStructure();
    argument.beginArray(QMetaType::Int);
    for (const int key : sequence.keys)
        argument << key;
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, GlobalAccelKeys &sequence)
{
    argument.beginStructure();
    argument.beginArray();
    for (size_t i = 0; !argument.atEnd(); ++i) {
        int key = 0;
        argument >> key;
        if (i < GlobalAccelKeys::length)
            sequence.keys[i] = key;
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

namespace {

const QString objectPath = QStringLiteral("/kglobalaccel");
const QString interfaceName = QStringLiteral("org.kde.KGlobalAccel");
const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");
const QString pressedSignal = QStringLiteral("globalShortcutPressed");

const QString componentName = QStringLiteral("org.quenby.QNBHelper");
const QString actionName = QStringLiteral("show-presets");

/// The keys are set by the program now, and not taken from what the desktop remembers.
constexpr uint setPresent = 2;
constexpr uint noAutoloading = 4;
/// In milliseconds.
constexpr int answerTimeout = 5000;

QStringList actionId()
{
    return {componentName, actionName, QStringLiteral("Quenby"),
            QCoreApplication::translate("GlobalAccelHotKey", "Show the presets")};
}

QDBusMessage messageTo(const QString &owner, const QString &method, const QVariantList &arguments)
{
    QDBusMessage result = QDBusMessage::createMethodCall(owner, objectPath, interfaceName, method);
    result.setArguments(arguments);
    result.setAutoStartService(false);
    return result;
}

/// Whether nobody is there to answer; any other error is an answer, or one that takes too long.
bool isMissing(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
        return true;
    default:
        return error.name() == u"org.freedesktop.DBus.Error.NameHasNoOwner";
    }
}

} // namespace

GlobalAccelHotKey::GlobalAccelHotKey(QDBusConnection bus, QString owner, Handlers handlers)
    : bus_(std::move(bus))
    , owner_(std::move(owner))
    , handlers_(std::move(handlers))
{
    qDBusRegisterMetaType<GlobalAccelKeys>();
    qDBusRegisterMetaType<QList<GlobalAccelKeys>>();
}

GlobalAccelHotKey::~GlobalAccelHotKey()
{
    if (isRegistered_)
        bus_.send(messageTo(owner_, QStringLiteral("unregister"), {componentName, actionName}));
}

QString GlobalAccelHotKey::name() const
{
    return QStringLiteral("the desktop's hot keys");
}

void GlobalAccelHotKey::grab(const KeyCombo &combo)
{
    combo_ = combo;
    isRegistered_ = true;
    // Of whatever object of the service, which gives the component one of its own.
    bus_.connect(owner_, QString(), componentInterface, pressedSignal, this,
                 SLOT(pressed(QString, QString, qlonglong)));
    call(QStringLiteral("doRegister"), {actionId()},
         [this](const QDBusMessage &) { setKeys(handlers_.refused); });
}

void GlobalAccelHotKey::keyboardChanged()
{
    if (keys_ && presentKeys() != *keys_)
        setKeys(handlers_.lost);
}

QList<int> GlobalAccelHotKey::presentKeys() const
{
    const KeyboardLayout layout = KeyboardLayout::first();
    QList<int> keys;
    for (const KeyCombo &place : LayoutKeys::places(combo_, layout)) {
        if (const auto typed = LayoutKeys::typed(place, layout))
            keys.append(typed->toCombined());
    }
    return keys;
}

void GlobalAccelHotKey::setKeys(const std::function<void(const QString &reason)> &unset)
{
    const QList<int> keys = presentKeys();
    keys_ = keys;
    QList<GlobalAccelKeys> sequences;
    for (const int key : keys)
        sequences.append(GlobalAccelKeys{{key}});
    call(QStringLiteral("setShortcutKeys"),
         {actionId(), QVariant::fromValue(sequences), setPresent | noAutoloading},
         [this, unset, wanted = keys](const QDBusMessage &reply) {
             const QVariant answer = reply.arguments().value(0);
             const auto set = qdbus_cast<QList<GlobalAccelKeys>>(answer);
             const bool wasHeard = isHeard_;
             isHeard_ = std::any_of(set.cbegin(), set.cend(), [&wanted](const GlobalAccelKeys &sequence) {
                 return wanted.contains(sequence.keys[0]);
             });
             if (!isHeard_)
                 unset(wanted.isEmpty() ? QStringLiteral("the keyboard's layout does not have it")
                                        : QStringLiteral("something else has it"));
             else if (!wasHeard)
                 handlers_.granted({});
         });
}

void GlobalAccelHotKey::call(const QString &method, const QVariantList &arguments,
                             const std::function<void(const QDBusMessage &reply)> &then)
{
    auto *watcher = new QDBusPendingCallWatcher(
        bus_.asyncCall(messageTo(owner_, method, arguments), answerTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, then] {
        watcher->deleteLater();
        if (watcher->isError()) {
            const QDBusError error = watcher->error();
            (isMissing(error) ? handlers_.missing : handlers_.refused)(error.message());
        } else {
            then(watcher->reply());
        }
    });
}

void GlobalAccelHotKey::pressed(const QString &component, const QString &action, qlonglong)
{
    if (component == componentName && action == actionName)
        handlers_.pressed({});
}
