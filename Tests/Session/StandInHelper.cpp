// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// usage: QNBHelper
// Stands in for the helper: runs until it is ended, and writes to the file that the variable
// QUENBY_HELPER_REPORT names, line by line, that it has started and, on each notification of a save, the
// options that it finds in the domain. With the variable QUENBY_HELPER_STAYS it ignores SIGTERM.

#include "Platform/Preferences/Preferences.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QFile>
#include <QVariant>
#include <csignal>

namespace {

const QString notificationPath = QStringLiteral("/org/quenby/DistributedNotificationCenter");
const QString notificationInterface = QStringLiteral("org.quenby.DistributedNotificationCenter");
const QString notificationName = QStringLiteral("QNBPresetConfigurationChangedNotification");

class StandInHelper final : public QObject
{
    Q_OBJECT

public:
    bool start()
    {
        report_.setFileName(qEnvironmentVariable("QUENBY_HELPER_REPORT"));
        // Several may write, each line as a whole.
        if (!report_.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
            return false;
        QDBusConnection::sessionBus().connect(QString(), notificationPath, notificationInterface,
                                              notificationName, this, SLOT(readOptions()));
        report("started");
        return true;
    }

private Q_SLOTS:
    void readOptions()
    {
        const Preferences preferences(QStringLiteral(QUENBY_IDENTIFIER));
        const auto number = [&preferences](const QString &key) {
            return QByteArray::number(preferences.copyAppValue(key).toLongLong());
        };
        report("menu " + number(QStringLiteral("QNBShowMenubar")) + " code " +
               number(QStringLiteral("QNBHotKeyCode")) + " flags " +
               number(QStringLiteral("QNBHotKeyFlags")));
    }

private:
    void report(const QByteArray &line)
    {
        report_.write(QByteArray::number(QCoreApplication::applicationPid()) + ' ' + line + '\n');
    }

    QFile report_;
};

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet("QUENBY_HELPER_STAYS"))
        std::signal(SIGTERM, SIG_IGN);
    const QCoreApplication application(argc, argv);
    StandInHelper helper;
    return helper.start() ? QCoreApplication::exec() : 1;
}

#include "StandInHelper.moc"
