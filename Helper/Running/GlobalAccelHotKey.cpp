// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/GlobalAccelHotKey.h"

#include "Helper/Running/NameOwner.h"
#include "Keyboard/LayoutKeys.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

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

Q_LOGGING_CATEGORY(lcGlobalAccel, "quenby.helper.hotkey.globalaccel")

const QString service = QStringLiteral("org.kde.kglobalaccel");
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

QDBusMessage message(const QString &method, const QVariantList &arguments)
{
    QDBusMessage result = QDBusMessage::createMethodCall(service, objectPath, interfaceName, method);
    result.setArguments(arguments);
    result.setAutoStartService(false);
    return result;
}

} // namespace

GlobalAccelHotKey::GlobalAccelHotKey(QDBusConnection bus, Handlers handlers)
    : bus_(std::move(bus))
    , handlers_(std::move(handlers))
{
    qDBusRegisterMetaType<GlobalAccelKeys>();
    qDBusRegisterMetaType<QList<GlobalAccelKeys>>();
}

GlobalAccelHotKey::~GlobalAccelHotKey()
{
    if (isRegistered_)
        bus_.send(message(QStringLiteral("unregister"), {componentName, actionName}));
}

QString GlobalAccelHotKey::name() const
{
    return QStringLiteral("the desktop's hot keys");
}

void GlobalAccelHotKey::grab(const KeyCombo &combo)
{
    combo_ = combo;
    NameOwner::ask(bus_, service, this, [this](const QString &owner) {
        if (owner.isEmpty()) {
            handlers_.missing(QStringLiteral("it has none"));
            return;
        }
        // Of whatever object of the service, which gives the component one of its own.
        bus_.connect(owner, QString(), componentInterface, pressedSignal, this,
                     SLOT(pressed(QString, QString, qlonglong)));
        call(QStringLiteral("doRegister"), {actionId()}, [this](const QDBusMessage &) {
            isRegistered_ = true;
            setKeys([this](bool isSet) {
                if (isSet)
                    handlers_.granted({});
                else
                    handlers_.refused(QStringLiteral("something else has it"));
            });
        });
    });
}

void GlobalAccelHotKey::keyboardChanged()
{
    if (!isRegistered_ || presentKeys() == keys_)
        return;
    setKeys([](bool isSet) {
        if (!isSet)
            qCWarning(lcGlobalAccel) << "not heard with this layout of the keyboard: something else has it";
    });
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

void GlobalAccelHotKey::setKeys(const std::function<void(bool isSet)> &then)
{
    keys_ = presentKeys();
    QList<GlobalAccelKeys> sequences;
    for (const int key : keys_)
        sequences.append(GlobalAccelKeys{{key}});
    call(QStringLiteral("setShortcutKeys"),
         {actionId(), QVariant::fromValue(sequences), setPresent | noAutoloading},
         [then, wanted = keys_](const QDBusMessage &reply) {
             const QVariant answer = reply.arguments().value(0);
             const auto set = qdbus_cast<QList<GlobalAccelKeys>>(answer);
             then(std::any_of(set.cbegin(), set.cend(), [&wanted](const GlobalAccelKeys &sequence) {
                 return wanted.contains(sequence.keys[0]);
             }));
         });
}

void GlobalAccelHotKey::call(const QString &method, const QVariantList &arguments,
                             const std::function<void(const QDBusMessage &reply)> &then)
{
    auto *watcher =
        new QDBusPendingCallWatcher(bus_.asyncCall(message(method, arguments), answerTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, then] {
        watcher->deleteLater();
        if (watcher->isError()) {
            const QString reason = watcher->error().message();
            handlers_.missing(reason);
        } else {
            then(watcher->reply());
        }
    });
}

void GlobalAccelHotKey::pressed(const QString &component, const QString &action, qlonglong)
{
    if (component == componentName && action == actionName)
        handlers_.pressed();
}
