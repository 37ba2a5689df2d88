// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PortalHotKey.h"

#include "Helper/Running/NameOwner.h"
#include "Helper/Running/PortalTrigger.h"
#include "Shared/Source/QNBShared.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>
#include <QUuid>

#include <utility>

/// A shortcut on the bus: its name, and what there is to say of it.
struct PortalShortcut
{
    QString id;
    QVariantMap options;
};
Q_DECLARE_METATYPE(PortalShortcut)

QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.options;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.options;
    argument.endStructure();
    return argument;
}

namespace {

Q_LOGGING_CATEGORY(lcPortal, "quenby.helper.hotkey.portal")

const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

/// Where there is one: programs that are no packages of their own say there which application they are.
const QString registryInterface = QStringLiteral("org.freedesktop.host.portal.Registry");
/// By which some desktops know the session again: the same in each run.
const QString sessionToken = QStringLiteral("quenby");

const QString shortcutId = QStringLiteral("show-presets");
/// What a request is answered with: else it went wrong.
constexpr uint granted = 0;
constexpr uint cancelled = 1;

/// Part of a path on the bus.
QString newToken()
{
    return QStringLiteral("quenby_") + QUuid::createUuid().toString(QUuid::Id128);
}

/// The keys of ours, as the desktop gives them, among \a shortcuts; none if ours is not among them.
std::optional<QString> describedKeys(const QVariant &shortcuts)
{
    const auto list = qdbus_cast<QList<PortalShortcut>>(shortcuts);
    for (const PortalShortcut &shortcut : list) {
        if (shortcut.id == shortcutId)
            return PortalTrigger::shown(
                shortcut.options.value(QStringLiteral("trigger_description")).toString(),
                KeyboardLayout::first());
    }
    return {};
}

/// Whether the program that was asked has ended before it answered, or has been silent for too long.
bool isSilence(const QDBusMessage &reply)
{
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::Disconnected:
        return true;
    default:
        return false;
    }
}

/// Whether there is no program with the name that was called.
bool isNobody(const QDBusMessage &reply)
{
    return QDBusError(reply).type() == QDBusError::ServiceUnknown ||
           reply.errorName() == u"org.freedesktop.DBus.Error.NameHasNoOwner";
}

} // namespace

PortalHotKey::PortalHotKey(QDBusConnection bus, Handlers handlers)
    : bus_(std::move(bus))
    , handlers_(std::move(handlers))
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
}

PortalHotKey::~PortalHotKey()
{
    if (!session_.path().isEmpty())
        bus_.send(QDBusMessage::createMethodCall(portal_, session_.path(), sessionInterface,
                                                 QStringLiteral("Close")));
}

QString PortalHotKey::name() const
{
    return QStringLiteral("the desktop's portal");
}

void PortalHotKey::grab(const KeyCombo &combo)
{
    combo_ = combo;
    // Before anything else is asked of the portal. It is refused where the application is known already.
    call(QDBusMessage::createMethodCall(service, objectPath, registryInterface, QStringLiteral("Register"))
             << QNBProductIdentifier() << QVariantMap(),
         [this](const QDBusMessage &reply) {
             if (isSilence(reply)) {
                 handlers_.gone(reply.errorMessage());
                 return;
             }
             if (reply.type() == QDBusMessage::ErrorMessage)
                 qCInfo(lcPortal) << "the application is not registered:" << reply.errorMessage();
             // The call has started it, where it can be started.
             NameOwner::ask(bus_, service, this, [this, answer = reply.errorMessage()](const QString &owner) {
                 if (owner.isEmpty()) {
                     handlers_.missing(answer);
                     return;
                 }
                 portal_ = owner;
                 bus_.connect(portal_, objectPath, shortcutsInterface, QStringLiteral("Activated"), this,
                              SLOT(activated(QDBusMessage)));
                 bus_.connect(portal_, objectPath, shortcutsInterface, QStringLiteral("ShortcutsChanged"),
                              this, SLOT(shortcutsChanged(QDBusMessage)));
                 bus_.connect(portal_, QString(), sessionInterface, QStringLiteral("Closed"), this,
                              SLOT(closed(QDBusMessage)));
                 createSession();
             });
         });
}

QDBusMessage PortalHotKey::shortcutsCall(const QString &method) const
{
    // Another portal would know nothing of the session.
    return QDBusMessage::createMethodCall(portal_, objectPath, shortcutsInterface, method);
}

void PortalHotKey::createSession()
{
    QVariantMap options = requestOptions(SLOT(sessionAnswered(uint, QVariantMap)));
    options.insert(QStringLiteral("session_handle_token"), sessionToken);
    // Also one that is never answered has to be closed: the next has the same path.
    session_.setPath(pathOf(QStringLiteral("session"), sessionToken));
    request(shortcutsCall(QStringLiteral("CreateSession")) << options);
}

QString PortalHotKey::pathOf(const QString &kind, const QString &token) const
{
    const QString sender = bus_.baseService().mid(1).replace(u'.', u'_');
    return objectPath + u'/' + kind + u'/' + sender + u'/' + token;
}

QVariantMap PortalHotKey::requestOptions(const char *slot)
{
    const QString token = newToken();
    // The answer may come before the reply that names the request.
    bus_.connect(portal_, pathOf(QStringLiteral("request"), token), requestInterface,
                 QStringLiteral("Response"), this, slot);
    return {{QStringLiteral("handle_token"), token}};
}

void PortalHotKey::request(const QDBusMessage &message)
{
    call(message, [this](const QDBusMessage &reply) {
        if (reply.type() != QDBusMessage::ErrorMessage)
            return;
        if (isSilence(reply) || isNobody(reply))
            handlers_.gone(reply.errorMessage());
        else
            (isSessionOpen_ ? handlers_.refused : handlers_.missing)(reply.errorMessage());
    });
}

void PortalHotKey::call(const QDBusMessage &message,
                        const std::function<void(const QDBusMessage &reply)> &then)
{
    auto *watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, then] {
        watcher->deleteLater();
        then(watcher->reply());
    });
}

void PortalHotKey::sessionAnswered(uint response, const QVariantMap &results)
{
    const QString path = results.value(QStringLiteral("session_handle")).toString();
    if (response != granted || path.isEmpty()) {
        session_ = {};
        handlers_.missing(QStringLiteral("it opens no session"));
        return;
    }
    session_.setPath(path);
    isSessionOpen_ = true;
    PortalShortcut shortcut{
        shortcutId,
        {{QStringLiteral("description"), QCoreApplication::translate("PortalHotKey", "Show the presets")}}};
    const QString trigger = PortalTrigger::forCombo(combo_, KeyboardLayout::first());
    if (!trigger.isEmpty())
        shortcut.options.insert(QStringLiteral("preferred_trigger"), trigger);
    const QString noParentWindow = QStringLiteral("");
    handlers_.asking();
    request(shortcutsCall(QStringLiteral("BindShortcuts"))
            << QVariant::fromValue(session_) << QVariant::fromValue(QList<PortalShortcut>{shortcut})
            << noParentWindow << requestOptions(SLOT(bindingAnswered(uint, QVariantMap))));
}

void PortalHotKey::bindingAnswered(uint response, const QVariantMap &results)
{
    const std::optional<QString> keys = describedKeys(results.value(QStringLiteral("shortcuts")));
    // GNOME 48 grants with any number. Who cancels gives no keys.
    if (keys && (response == granted || !keys->isEmpty())) {
        keys_ = keys;
        handlers_.granted(*keys);
    } else if (keys || response == granted || response == cancelled) {
        handlers_.denied(QStringLiteral("the user does not want it"));
    } else {
        handlers_.refused(QStringLiteral("it could not ask the user"));
    }
}

void PortalHotKey::activated(const QDBusMessage &signal)
{
    const auto session = signal.arguments().value(0).value<QDBusObjectPath>();
    const QString shortcut = signal.arguments().value(1).toString();
    const auto options = qdbus_cast<QVariantMap>(signal.arguments().value(3));
    if (session == session_ && shortcut == shortcutId)
        handlers_.pressed(options.value(QStringLiteral("activation_token")).toString().toUtf8());
}

void PortalHotKey::shortcutsChanged(const QDBusMessage &signal)
{
    const auto session = signal.arguments().value(0).value<QDBusObjectPath>();
    if (!keys_ || session != session_)
        return;
    const std::optional<QString> keys = describedKeys(signal.arguments().value(1));
    // Some desktops never name the keys.
    if (keys && (!keys->isEmpty() || keys_->isEmpty())) {
        keys_ = keys;
        handlers_.granted(*keys);
    } else {
        handlers_.lost(QStringLiteral("the user has taken it away"));
    }
}

void PortalHotKey::closed(const QDBusMessage &signal)
{
    if (signal.path() != session_.path())
        return;
    session_ = {};
    handlers_.refused(QStringLiteral("the desktop has closed the session"));
}
