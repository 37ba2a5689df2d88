// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/HotKey.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <functional>

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
    PortalHotKey(QDBusConnection bus, Handlers handlers);
    ~PortalHotKey() override;

    QString name() const override;
    void grab(const KeyCombo &combo) override;

private Q_SLOTS:
    void sessionAnswered(uint response, const QVariantMap &results);
    void bindingAnswered(uint response, const QVariantMap &results);
    void activated(const QDBusMessage &signal);

private:
    void createSession();
    /// Options with a token for the request, whose answer is given to \a slot.
    QVariantMap requestOptions(const char *slot);
    void request(const QDBusMessage &message);
    void call(const QDBusMessage &message, const std::function<void(const QDBusMessage &reply)> &then);

    QDBusConnection bus_;
    /// The name that is the portal's own.
    QString portal_;
    const Handlers handlers_;
    KeyCombo combo_;
    QDBusObjectPath session_;
};
