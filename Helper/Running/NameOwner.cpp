// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/NameOwner.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

void NameOwner::ask(const QDBusConnection &bus, const QString &name, QObject *context,
                    const std::function<void(const QString &owner)> &then)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    question << name;
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, then] {
        watcher->deleteLater();
        // An error is answered where nobody has it.
        const QDBusPendingReply<QString> owner = *watcher;
        then(owner.isError() ? QString() : owner.value());
    });
}
