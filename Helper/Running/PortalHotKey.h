// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QDBusMessage;
QT_END_NAMESPACE

/// A hot key by the desktop's portal, `org.freedesktop.portal.GlobalShortcuts`. The combination is a wish
/// there: the desktop asks the user for the real one, and remembers it for the application, which says before
/// which one it is.
class PortalHotKey : public QObject, public HotKey
{
    Q_OBJECT

public:
    /// The name of the service on the bus.
    static inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");

    PortalHotKey(QDBusConnection bus, Handlers handlers);
    ~PortalHotKey() override;

    QString name() const override;
    void grab(const KeyCombo &combo) override;

private Q_SLOTS:
    void sessionAnswered(uint response, const QVariantMap &results);
    void bindingAnswered(uint response, const QVariantMap &results);
    void activated(const QDBusMessage &signal);
    void shortcutsChanged(const QDBusMessage &signal);
    void closed(const QDBusMessage &signal);

private:
    void createSession();
    /// The path below \a kind of what has \a token, if this program has asked for it.
    QString pathOf(const QString &kind, const QString &token) const;
    /// Options with a token for the request, whose answer is given to \a slot.
    QVariantMap requestOptions(const char *slot);
    QDBusMessage shortcutsCall(const QString &method) const;
    void request(const QDBusMessage &message);
    void call(const QDBusMessage &message, const std::function<void(const QDBusMessage &reply)> &then);

    QDBusConnection bus_;
    /// The name that is the portal's own.
    QString portal_;
    const Handlers handlers_;
    KeyCombo combo_;
    /// There may be one, from the question on.
    QDBusObjectPath session_;
    bool isSessionOpen_ = false;
    /// As it was granted last, if it was.
    std::optional<QString> keys_;
};
