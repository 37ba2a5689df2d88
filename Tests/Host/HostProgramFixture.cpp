// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Host/HostProgramFixture.h"

#include "Tests/Hosting/TestBundle.h"
#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QFile>

HostProgramFixture::HostProgramFixture()
    : environment_(home_.environment())
{
    QDir().mkpath(QFileInfo(program()).path());
    QFile::copy(QStringLiteral(QUENBY_PREFERENCES), program());
    TestBundle::make(panePath(), TestBundle::recordingPane());
    environment_.insert(QStringLiteral("QUENBY_TEST_RECORD"), recordPath());
    environment_.insert(QStringLiteral("QUENBY_TEST_GO_ON"), goOnPath());
}

QByteArray HostProgramFixture::record() const
{
    QFile file(recordPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool HostProgramFixture::waitForRecord(const QByteArray &call) const
{
    return waitUntil([&] { return record().contains(call + '\n'); });
}

bool HostProgramFixture::catches(qint64 pid, int signal)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("SigCgt:"))
            return (line.mid(7).trimmed().toULongLong(nullptr, 16) >> (signal - 1)) & 1;
    }
    return false;
}
