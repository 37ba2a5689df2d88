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

HotKeys::HotKeys(SessionBus &bus, Handlers handlers, const PortalPauses &pauses)
    : handlers_(std::move(handlers))
    , portalPauses_(pauses)
    , keyboardWatch_([this] {
        if (hotKey_)
            hotKey_->keyboardChanged();
    })
{
    pause_.setSingleShot(true);
    connect(&pause_, &QTimer::timeout, this, &HotKeys::takeUpAgain);
    portalPause_.setSingleShot(true);
    connect(&portalPause_, &QTimer::timeout, this, [this] {
        if (way_ == Way::None)
            askAnew();
    });
    listenForOwner(bus, Way::GlobalAccel, GlobalAccelHotKey::service);
    listenForOwner(bus, Way::Portal, PortalHotKey::service);
    if (isWaylandSession())
        listenForOwner(bus, Way::GlobalAccel, compositorService);
}

HotKeys::~HotKeys() = default;

void HotKeys::listenForOwner(SessionBus &bus, Way way, const QString &service)
{
    bus.listen(SessionBus::ownerChange(service),
               mailbox_.bound<const QDBusMessage &>([this, way](const QDBusMessage &change) {
                   const QVariantList arguments = change.arguments();
                   ownerChanged(way, !arguments.value(1).toString().isEmpty(),
                                !arguments.value(2).toString().isEmpty());
               }));
}

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
    wasDenied_ = false;
    isPortalGivenUp_ = false;
    portalPauses_.reset();
    portalPause_.stop();
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
    portalHears_.invalidate();
    way_ = Way::None;
}

void HotKeys::start()
{
    if (combo_.isEmpty()) {
        qCInfo(lcHotKey) << "there is no hot key";
        handlers_.stateChanged(QNBHelperState::HotKey::None, {});
        return;
    }
    wasRefused_ = wasDenied_;
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
        if (bus_ && isWaylandSession() && mayAskPortal())
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
        // It may still be heard by the portal.
        if (!wasRefused_ && portalPause_.isActive())
            break;
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
        if (!wasThere)
            return;
        if (way == Way::Portal)
            portalHasGone();
        else
            askAnew();
    } else if (isThere && way == Way::GlobalAccel) {
        askForGlobalAccel([this](const QString &owner) {
            if (!owner.isEmpty())
                askAnew();
        });
    } else if (isThere && way_ == Way::None && mayAskPortal()) {
        askAnew();
    }
}

bool HotKeys::mayAskPortal() const
{
    return !wasDenied_ && !isPortalGivenUp_ && !portalPause_.isActive();
}

void HotKeys::portalHasGone()
{
    const bool wasHeard = portalHears_.isValid();
    const std::chrono::milliseconds heard(wasHeard ? portalHears_.elapsed() : 0);
    if (wasHeard)
        handlers_.stateChanged(QNBHelperState::HotKey::Asking, {});
    if (const auto pause = portalPauses_.next(heard))
        portalPause_.start(*pause);
    else
        isPortalGivenUp_ = true;
    askAnew();
}

void HotKeys::grabBy(Way way, const QString &owner)
{
    const auto end = [this, generation = generation_](const QString &reason, auto then) {
        qCInfo(lcHotKey) << "not by" << qUtf8Printable(hotKey_->name()) << reason;
        // It is still at work.
        QMetaObject::invokeMethod(
            this,
            [this, then, generation] {
                if (generation == generation_)
                    then();
            },
            Qt::QueuedConnection);
    };
    const auto next = [this, way] {
        letGo();
        tryWay(nextAfter(way));
    };
    const auto refused = [this, end, next](const QString &reason) {
        wasRefused_ = true;
        end(reason, next);
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
                if (way_ == Way::Portal && !portalHears_.isValid())
                    portalHears_.start();
                handlers_.stateChanged(heardBy(way_), keys);
            },
        .lost =
            [this](const QString &reason) {
                qCWarning(lcHotKey) << "for now not by" << qUtf8Printable(hotKey_->name()) << reason;
                portalHears_.invalidate();
                handlers_.stateChanged(QNBHelperState::HotKey::Refused, {});
            },
        .refused = refused,
        .denied =
            [this, refused](const QString &reason) {
                wasDenied_ = true;
                refused(reason);
            },
        .missing = [end, next](const QString &reason) { end(reason, next); },
        .gone = [this, end](const QString &reason) { end(reason, [this] { portalHasGone(); }); },
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
