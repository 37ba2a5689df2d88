// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Saves preferences as its arguments say, for tests that need a process of its own: one to kill, to refuse a
// system call, to confine or to run beside another.
//
//     quenby-test-save COMMAND CONFIG_FOLDER LOCK_FOLDER KEY SIZE_OR_COUNT
//
// once: one save of a text of that many characters under the key; a second try if it fails. The exit status
//     is that of the first, 0 or 1; 2 if the second failed too or could not be told from the first.
// limited: once in a process whose files may have no more than half as many bytes, without the second try.
// measured: once, without the second try; prints the most memory, in bytes, that the process had.
// many: that many saves, each of a key of its own.

#include "Platform/Preferences/Preferences.h"

#include <QCoreApplication>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int usage = 64;
/// Asked for before the first read and after the save, so that a trace shows where they are.
constexpr char begin[] = "/quenby-test-save-begins";
constexpr char end[] = "/quenby-test-save-ends";

int saveOnce(Preferences &preferences, const QString &key, int size, bool again)
{
    (void)::access(begin, F_OK);
    (void)preferences.copyAppValue(key);
    preferences.setAppValue(key, QString(size, u'n'));
    const bool first = preferences.appSynchronize().ok;
    (void)::access(end, F_OK);
    if (first == preferences.hasPendingValues())
        return 2;
    if (!first && again) {
        const bool isRead = !preferences.isUnread() || preferences.read();
        if (!isRead || !preferences.appSynchronize())
            return 2;
    }
    return first ? 0 : 1;
}

qint64 peakMemory()
{
    static const QByteArray field("VmHWM:");
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(field.size()).chopped(qsizetype(sizeof " kB") - 1).trimmed().toLongLong() * 1024;
    }
    return -1;
}

void limitFiles(int size)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{static_cast<rlim_t>(size), static_cast<rlim_t>(size)};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 6)
        return usage;
    const QString &command = arguments.at(1);
    const QString &key = arguments.at(4);
    const int number = arguments.at(5).toInt();
    Preferences preferences(
        QStringLiteral("org.example.Test"),
        {.folder = arguments.at(2), .lockFolder = arguments.at(3), .layer = nullptr, .lockTimeout = 20'000});

    if (command == QLatin1StringView("once"))
        return saveOnce(preferences, key, number, true);
    if (command == QLatin1StringView("limited")) {
        limitFiles(number / 2);
        return saveOnce(preferences, key, number, false);
    }
    if (command == QLatin1StringView("measured")) {
        const int status = saveOnce(preferences, key, number, false);
        std::printf("%lld\n", static_cast<long long>(peakMemory()));
        return status;
    }
    if (command != QLatin1StringView("many"))
        return usage;
    for (int i = 0; i < number; ++i) {
        preferences.setAppValue(key + QString::number(i), qlonglong(i));
        if (!preferences.appSynchronize())
            return 1;
    }
    return 0;
}
