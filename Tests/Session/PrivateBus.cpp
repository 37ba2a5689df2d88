// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFile>

#include <csignal>

namespace {

const QString configuration = QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");

} // namespace

PrivateBus::PrivateBus()
    : address_(QStringLiteral("unix:path=%1/bus").arg(folder_.path()))
{
    start();
}

qint64 PrivateBus::processOf(const QString &name) const
{
    const QString busName = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage question =
        QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                                       QStringLiteral("GetConnectionUnixProcessID"));
    question << name;
    const QString connection = QStringLiteral("asking-for-a-process");
    const QDBusMessage answer = QDBusConnection::connectToBus(address_, connection).call(question);
    QDBusConnection::disconnectFromBus(connection);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().constFirst().toUInt() : 0;
}

void PrivateBus::kill()
{
    process_->signal(SIGKILL);
    process_->waitForEnd();
    process_.reset();
}

void PrivateBus::start()
{
    const QString configurationPath = folder_.filePath(QStringLiteral("bus.conf"));
    QFile file(configurationPath);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(configuration.arg(address_, servicesFolder()).toUtf8()) < 0)
        qFatal("%s", qPrintable(file.errorString()));
    file.close();
    QDir().mkpath(servicesFolder());
    QFile::remove(folder_.filePath(QStringLiteral("bus")));
    process_ = std::make_unique<ChildProcess>(
        QStringLiteral("dbus-daemon"),
        QStringList{QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                    QStringLiteral("--config-file=%1").arg(configurationPath)});
    if (!waitUntil([this] { return process_->output().contains('\n'); }))
        qFatal("no bus: %s", process_->errors().constData());
}
