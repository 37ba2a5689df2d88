// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

class SessionBus;

/// What the running helper says of itself on the session bus, for the pane to show.
struct QNBHelperState
{
    /// What has become of the hot key.
    enum class HotKey {
        /// None is set, or it is not known yet.
        None,
        /// It is heard, by the desktop's own hot keys.
        ByDesktop,
        /// The desktop's portal has been asked for it, and asks the user.
        Asking,
        /// It is heard, by the desktop's portal.
        ByPortal,
        /// It is heard, by a grab on the X screen.
        ByScreen,
        /// It is not heard: the desktop or the user does not give it, or another program has it.
        Refused,
        /// It is not heard: this desktop has no way to hear of keys.
        Impossible,
    };

    HotKey hotKey = HotKey::None;
    /// How the desktop's portal describes the keys that it hears; empty if it does not.
    QString keys = {};
    /// Whether the desktop shows the icons of programs; none while it is not known.
    std::optional<bool> hasTray = {};

    friend bool operator==(const QNBHelperState &, const QNBHelperState &) = default;

    QVariantMap toMap() const;
    /// Whatever \a map lacks is as it is before anything is known.
    static QNBHelperState fromMap(const QVariantMap &map);

    /// Asks the helper that runs on \a bus, and calls \a answered on the bus's thread; with none if there is
    /// no helper, or it says nothing.
    static void ask(SessionBus &bus,
                    const std::function<void(const std::optional<QNBHelperState> &state)> &answered);
};

/// Where the running helper is on the session bus, under QNBHelperServiceName(), which is its interface too.
inline const QString QNBHelperObjectPath = QStringLiteral("/org/quenby/QNBHelper");
/// A method of the running helper, which answers with such a map.
inline const QString QNBHelperStateMethod = QStringLiteral("State");
/// Posted whenever it would answer otherwise.
inline const QString QNBHelperStateChangedNotification = QStringLiteral("QNBHelperStateChangedNotification");
