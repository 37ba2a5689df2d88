// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/NotificationListener.h"

namespace {

const QByteArray readyMember = "ListenerIsReady";

} // namespace

NotificationListener::NotificationListener(const QString &busAddress)
    : monitor_(QStringLiteral("dbus-monitor"),
               {QStringLiteral("--address"), busAddress,
                QStringLiteral("type='signal',interface='org.quenby.DistributedNotificationCenter'")})
{
    const auto isReady = [this, &busAddress] {
        ChildProcess sender(QStringLiteral("dbus-send"),
                            {QStringLiteral("--bus=%1").arg(busAddress), QStringLiteral("--type=signal"),
                             QStringLiteral("/org/quenby/test"),
                             QStringLiteral("org.quenby.DistributedNotificationCenter.%1")
                                 .arg(QString::fromLatin1(readyMember))});
        sender.waitForEnd();
        return monitor_.output().contains(readyMember);
    };
    if (!waitUntil(isReady))
        qFatal("no listener: %s", monitor_.errors().constData());
}

QList<QByteArray> NotificationListener::heard()
{
    QList<QByteArray> result;
    const QList<QByteArray> lines = monitor_.output().split('\n');
    bool isOurs = false;
    for (const QByteArray &line : lines) {
        if (line.startsWith("   ")) {
            if (isOurs)
                result.last() += ' ' + line.trimmed();
        } else {
            const qsizetype path = line.indexOf("path=");
            isOurs = line.startsWith("signal ") && path >= 0 &&
                     line.contains("interface=org.quenby.DistributedNotificationCenter;") &&
                     !line.contains(readyMember);
            if (isOurs)
                result.append(line.mid(path));
        }
    }
    return result;
}

int NotificationListener::count(const QByteArray &name)
{
    int result = 0;
    const QList<QByteArray> notifications = heard();
    for (const QByteArray &notification : notifications)
        result += notification.endsWith("member=" + name) ? 1 : 0;
    return result;
}
