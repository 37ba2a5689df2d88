// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

TemporaryHome::TemporaryHome()
{
    const QStringList folders = {configFolder(), dataFolder(), systemDataFolder(), stateFolder(),
                                 runtimeFolder()};
    for (const QString &folder : folders)
        QDir().mkpath(folder);
    QFile::setPermissions(runtimeFolder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QProcessEnvironment TemporaryHome::environment(const QString &busAddress) const
{
    QProcessEnvironment result;
    const QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
    const QStringList inherited = {QStringLiteral("PATH"),         QStringLiteral("LD_LIBRARY_PATH"),
                                   QStringLiteral("ASAN_OPTIONS"), QStringLiteral("UBSAN_OPTIONS"),
                                   QStringLiteral("LSAN_OPTIONS"), QStringLiteral("TSAN_OPTIONS")};
    for (const QString &name : inherited) {
        if (own.contains(name))
            result.insert(name, own.value(name));
    }
    result.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    result.insert(QStringLiteral("HOME"), path());
    result.insert(QStringLiteral("XDG_CONFIG_HOME"), configFolder());
    result.insert(QStringLiteral("XDG_DATA_HOME"), dataFolder());
    result.insert(QStringLiteral("XDG_DATA_DIRS"), systemDataFolder());
    result.insert(QStringLiteral("XDG_STATE_HOME"), stateFolder());
    result.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder());
    result.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    if (!busAddress.isEmpty())
        result.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
    return result;
}

QString TemporaryHome::homeOfAnother() const
{
    constexpr uid_t nobody = 65534;
    const QString folder = filePath(QStringLiteral("other"));
    const bool isGiven =
        QDir().mkpath(folder) && ::chown(QFile::encodeName(folder).constData(), nobody, nobody) == 0;
    // Only root can give a folder away; to everybody else root's own is another's.
    return isGiven ? folder : QStringLiteral("/");
}
