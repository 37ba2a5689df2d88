// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"
#include "Helper/Running/PortalPauses.h"
#include "Helper/Running/X11KeyboardWatch.h"
#include "Platform/Bus/Mailbox.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Desktop/KeyCodes.h"
#include "Shared/Source/QNBHelperState.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

/// The user's hot key, by the first of the desktop's ways that takes it: the desktop's own hot keys, then its
/// portal in a Wayland session, or a grab in an X session. In a Wayland session nothing is grabbed though
/// there may be an X screen, and a service of hot keys that is not the compositor's is not asked: only the
/// windows on that screen would hear of the key. If no way takes it there is no hot key, and the log says so.
/// When the program that serves the way in use ends, or one of a better way comes, it is asked for anew; the
/// portal after a pause, see PortalPauses, and no more if it has gone once more after the longest. It, and
/// who has refused by the portal, is asked again only when the settings or the bus change.
class HotKeys : public QObject
{
public:
    struct Handlers
    {
        /// The token is that of HotKey::Handlers::pressed.
        std::function<void(const QByteArray &activationToken)> pressed;
        /// The keys are those of HotKey::Handlers::granted.
        std::function<void(QNBHelperState::HotKey state, const QString &keys)> stateChanged;
    };

    HotKeys(SessionBus &bus, Handlers handlers, const PortalPauses &pauses = PortalPauses());
    ~HotKeys() override;

    /// The session bus is there from now on, or is not; the hot key is asked for anew.
    void setBus(const std::optional<QDBusConnection> &bus);
    /// Nothing is done if it is the one already.
    void set(const KeyCombo &combo);
    /// The combination is left to who records one, until resume() or for \a limit. A desktop that would ask
    /// the user again keeps it, but it does nothing.
    void pause(std::chrono::milliseconds limit);
    void resume();

private:
    enum class Way { GlobalAccel, Portal, X11, None };

    static Way nextAfter(Way way);
    /// For other settings, or on another bus: what was before does not count.
    void beginAnew();
    void askAnew();
    void start();
    void letGo();
    void takeUpAgain();
    void tryWay(Way way);
    /// Calls \a then with the program that serves the desktop's own hot keys, unless the settings have
    /// changed meanwhile; empty for none.
    void askForGlobalAccel(const std::function<void(const QString &owner)> &then);
    void listenForOwner(SessionBus &bus, Way way, const QString &service);
    void ownerChanged(Way way, bool wasThere, bool isThere);
    bool mayAskPortal() const;
    /// The portal may have died of what it was asked: it is left alone for a while, or from now on.
    void portalHasGone();
    /// \a owner is the one of the desktop's own hot keys.
    void grabBy(Way way, const QString &owner = {});
    static bool isWaylandSession();
    static QNBHelperState::HotKey heardBy(Way way);

    const Handlers handlers_;
    std::optional<QDBusConnection> bus_;
    KeyCombo combo_;
    /// Of the settings, to tell answers to earlier ones.
    int generation_ = 0;
    std::unique_ptr<HotKey> hotKey_;
    /// The one's.
    Way way_ = Way::None;
    /// One of the ways was there, and did not take it.
    bool wasRefused_ = false;
    /// The user has, asked by the portal.
    bool wasDenied_ = false;
    bool isPortalGivenUp_ = false;
    PortalPauses portalPauses_;
    /// Valid while the portal hears it, since it granted it.
    QElapsedTimer portalHears_;
    /// Active while the portal is left alone.
    QTimer portalPause_;
    X11KeyboardWatch keyboardWatch_;
    /// Active while paused.
    QTimer pause_;
    const Mailbox mailbox_;
};
