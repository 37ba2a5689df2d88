// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"

#include <QFile>

#include <csignal>

QuenbySession::QuenbySession()
    : pane_(home_.path())
    , listener_(bus_.address())
    , domain_(home_.configFolder())
{
}

std::unique_ptr<ChildProcess> QuenbySession::startHost(const Screen *screen) const
{
    return std::make_unique<ChildProcess>(QStringLiteral(QUENBY_PREFERENCES), QStringList(pane_.path()),
                                          screen ? screen->environmentFrom(environment()) : environment());
}

QProcessEnvironment QuenbySession::environment() const
{
    QProcessEnvironment environment = home_.environment(bus_.address());
    // Read by programs that were built with the sanitizers.
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       QStringLiteral("print_suppressions=0:suppressions=" QUENBY_TEST_DATA "/leaks.txt"));
    environment.insert(variables_);
    return environment;
}

bool QuenbySession::waitUntilItCatchesSignals(const ChildProcess &host)
{
    return waitUntil([&host] {
        QFile status(QStringLiteral("/proc/%1/status").arg(host.pid()));
        if (!status.open(QIODevice::ReadOnly))
            return false;
        const QByteArray text = status.readAll();
        const qsizetype caught = text.indexOf("SigCgt:");
        const qulonglong mask =
            text.mid(caught + 7, text.indexOf('\n', caught) - caught - 7).trimmed().toULongLong(nullptr, 16);
        return ((mask >> (SIGHUP - 1)) & 1) != 0;
    });
}

bool QuenbySession::waitForNotifications(int count)
{
    return waitUntil([&] { return notifications() >= count; }) && notifications() == count;
}
