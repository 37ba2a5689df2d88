// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/StandInPrograms.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <sys/wait.h>

StandInPrograms::StandInPrograms() = default;

QString StandInPrograms::add(const QString &name, const QByteArray &then)
{
    const QString path = programs_.filePath(name);
    addAt(path, name, then);
    return path;
}

void StandInPrograms::addAt(const QString &path, const QString &name, const QByteArray &then)
{
    const QByteArray record = '\'' + QFile::encodeName(filePath(name)) + ".started.'$$";
    QFile script(path);
    if (!script.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("%s: %s", qPrintable(path), qPrintable(script.errorString()));
    // Renamed when complete: whoever waits for it reads all of it.
    script.write("#!/bin/sh\n"
                 "for argument in \"$@\"; do printf '%s\\0' \"$argument\"; done > " +
                 record + ".new\n/bin/mv " + record + ".new " + record + '\n' + then + '\n');
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QByteArray StandInPrograms::becomeToolOnceGranted() const
{
    return "while ! [ -e '" + QFile::encodeName(filePath(QStringLiteral("granted"))) +
           "' ]; do sleep 0.01; done\nshift\nexec \"$@\"";
}

void StandInPrograms::grant()
{
    QFile granted(filePath(QStringLiteral("granted")));
    if (!granted.open(QIODevice::WriteOnly))
        qFatal("%s", qPrintable(granted.errorString()));
}

QList<QByteArrayList> StandInPrograms::starts(const QString &name) const
{
    QList<QByteArrayList> result;
    for (const int process : processes(name)) {
        QFile record(filePath(QStringLiteral("%1.started.%2").arg(name).arg(process)));
        if (!record.open(QIODevice::ReadOnly))
            continue;
        QByteArrayList arguments = record.readAll().split('\0');
        arguments.removeLast();
        result.append(arguments);
    }
    return result;
}

QList<int> StandInPrograms::processes(const QString &name) const
{
    const QString prefix = name + QStringLiteral(".started.");
    QList<int> result;
    for (const QString &record : QDir(records_.path()).entryList({prefix + u'*'}, QDir::Files)) {
        bool isProcess = false;
        const int process = record.mid(prefix.size()).toInt(&isProcess);
        if (isProcess)
            result.append(process);
    }
    return result;
}

bool hasNoChild()
{
    siginfo_t information = {};
    return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
}
