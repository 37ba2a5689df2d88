// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HotKeys.h"

#include "Helper/Running/GlobalAccelHotKey.h"
#include "Helper/Running/NameOwner.h"
#include "Helper/Running/PortalHotKey.h"
#include "Helper/Running/X11HotKey.h"
#include "Helper/Running/XConnection.h"

#include <QDBusMessage>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcHotKey, "quenby.helper.hotkey")

const QString waylandSession = QStringLiteral("wayland");
const QString compositorService = QStringLiteral("org.kde.KWin");

} // namespace

HotKeys::HotKeys(SessionBus &bus, Handlers handlers)
    : handlers_(std::move(handlers))
    , keyboardWatch_([this] {
        if (hotKey_)
            hotKey_->keyboardChanged();
    })
{
    pause_.setSingleShot(true);
    connect(&pause_, &QTimer::timeout, this, &HotKeys::takeUpAgain);
    for (const auto &[way, service] : {std::pair(Way::GlobalAccel, GlobalAccelHotKey::service),
                                       std::pair(Way::Portal, PortalHotKey::service)}) {
        bus.listen(SessionBus::ownerChange(service),
                   mailbox_.bound<const QDBusMessage &>([this, way = way](const QDBusMessage &change) {
                       const QVariantList arguments = change.arguments();
                       ownerChanged(way, !arguments.value(1).toString().isEmpty(),
                                    !arguments.value(2).toString().isEmpty());
                   }));
    }
}

HotKeys::~HotKeys() = default;

void HotKeys::setBus(const std::optional<QDBusConnection> &bus)
{
    bus_ = bus;
    if (!combo_.isEmpty())
        beginAnew();
}

void HotKeys::set(const KeyCombo &combo)
{
    if (combo == combo_)
        return;
    combo_ = combo;
    beginAnew();
}

void HotKeys::beginAnew()
{
    hasPortalRefused_ = false;
    askAnew();
}

void HotKeys::askAnew()
{
    letGo();
    if (!pause_.isActive())
        start();
}

void HotKeys::pause(std::chrono::milliseconds limit)
{
    const bool isFirst = !pause_.isActive();
    pause_.start(limit);
    if (!isFirst)
        return;
    qCInfo(lcHotKey) << "the hot key is left to who records one";
    if (way_ != Way::Portal)
        letGo();
}

void HotKeys::resume()
{
    if (!pause_.isActive())
        return;
    pause_.stop();
    takeUpAgain();
}

void HotKeys::takeUpAgain()
{
    if (!hotKey_)
        start();
}

void HotKeys::letGo()
{
    ++generation_;
    hotKey_.reset();
    way_ = Way::None;
}

void HotKeys::start()
{
    if (combo_.isEmpty()) {
        qCInfo(lcHotKey) << "there is no hot key";
        handlers_.stateChanged(QNBHelperState::HotKey::None, {});
        return;
    }
    wasRefused_ = hasPortalRefused_;
    if (KeyCodes::withCode(combo_.code))
        tryWay(Way::GlobalAccel);
    else {
        qCWarning(lcHotKey) << "there is no such key as that of the hot key:" << combo_.code;
        handlers_.stateChanged(QNBHelperState::HotKey::Refused, {});
    }
}

HotKeys::Way HotKeys::nextAfter(Way way)
{
    switch (way) {
    case Way::GlobalAccel:
        return Way::Portal;
    case Way::Portal:
        return Way::X11;
    default:
        return Way::None;
    }
}

void HotKeys::tryWay(Way way)
{
    switch (way) {
    case Way::GlobalAccel:
        if (bus_)
            askForGlobalAccel([this](const QString &owner) {
                owner.isEmpty() ? tryWay(Way::Portal) : grabBy(Way::GlobalAccel, owner);
            });
        else
            tryWay(nextAfter(way));
        break;
    case Way::Portal:
        if (bus_ && isWaylandSession() && !hasPortalRefused_)
            grabBy(way);
        else
            tryWay(nextAfter(way));
        break;
    case Way::X11:
        if (XConnection::get() && !isWaylandSession())
            grabBy(way);
        else
            tryWay(nextAfter(way));
        break;
    case Way::None:
        qCWarning(lcHotKey) << "there is no way to hear of the hot key here";
        handlers_.stateChanged(
            wasRefused_ ? QNBHelperState::HotKey::Refused : QNBHelperState::HotKey::Impossible, {});
        break;
    }
}

bool HotKeys::isWaylandSession()
{
    // Whatever the windows are on: with an X server for older programs that may be an X screen.
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           qEnvironmentVariable("XDG_SESSION_TYPE") == waylandSession;
}

QNBHelperState::HotKey HotKeys::heardBy(Way way)
{
    switch (way) {
    case Way::GlobalAccel:
        return QNBHelperState::HotKey::ByDesktop;
    case Way::Portal:
        return QNBHelperState::HotKey::ByPortal;
    case Way::X11:
        return QNBHelperState::HotKey::ByScreen;
    default:
        return QNBHelperState::HotKey::None;
    }
}

void HotKeys::askForGlobalAccel(const std::function<void(const QString &owner)> &then)
{
    const auto ask = [this](const QString &name, const std::function<void(const QString &owner)> &answered) {
        NameOwner::ask(*bus_, name, this, [this, answered, generation = generation_](const QString &owner) {
            if (generation == generation_)
                answered(owner);
        });
    };
    ask(GlobalAccelHotKey::service, [ask, then](const QString &owner) {
        if (owner.isEmpty() || !isWaylandSession())
            then(owner);
        else
            // The service of another program is there for the keys of an X screen.
            ask(compositorService,
                [then, owner](const QString &compositor) { then(compositor == owner ? owner : QString()); });
    });
}

void HotKeys::ownerChanged(Way way, bool wasThere, bool isThere)
{
    if (combo_.isEmpty() || !bus_)
        return;
    if (way == way_) {
        // Else it was started by our question.
        if (wasThere)
            askAnew();
    } else if (isThere && way == Way::GlobalAccel) {
        askForGlobalAccel([this](const QString &owner) {
            if (!owner.isEmpty())
                askAnew();
        });
    } else if (isThere && way_ == Way::None && !hasPortalRefused_) {
        askAnew();
    }
}

void HotKeys::grabBy(Way way, const QString &owner)
{
    const auto next = [this, way, generation = generation_](const QString &reason, bool isRefusal) {
        qCInfo(lcHotKey) << "not by" << qUtf8Printable(hotKey_->name()) << reason;
        wasRefused_ = wasRefused_ || isRefusal;
        hasPortalRefused_ = hasPortalRefused_ || (isRefusal && way == Way::Portal);
        // It is still at work.
        QMetaObject::invokeMethod(
            this,
            [this, way, generation] {
                if (generation != generation_)
                    return;
                letGo();
                tryWay(nextAfter(way));
            },
            Qt::QueuedConnection);
    };
    HotKey::Handlers handlers{
        .pressed =
            [this](const QByteArray &activationToken) {
                if (!pause_.isActive())
                    handlers_.pressed(activationToken);
            },
        .asking = [this] { handlers_.stateChanged(QNBHelperState::HotKey::Asking, {}); },
        .granted =
            [this](const QString &keys) {
                qCInfo(lcHotKey) << "the hot key is heard by" << qUtf8Printable(hotKey_->name());
                handlers_.stateChanged(heardBy(way_), keys);
            },
        .lost =
            [this](const QString &reason) {
                qCWarning(lcHotKey) << "for now not by" << qUtf8Printable(hotKey_->name()) << reason;
                handlers_.stateChanged(QNBHelperState::HotKey::Refused, {});
            },
        .refused = [next](const QString &reason) { next(reason, true); },
        .missing = [next](const QString &reason) { next(reason, false); },
    };
    if (way == Way::GlobalAccel)
        hotKey_ = std::make_unique<GlobalAccelHotKey>(*bus_, owner, std::move(handlers));
    else if (way == Way::Portal)
        hotKey_ = std::make_unique<PortalHotKey>(*bus_, std::move(handlers));
    else
        hotKey_ = std::make_unique<X11HotKey>(std::move(handlers));
    way_ = way;
    hotKey_->grab(combo_);
}
