// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/PeakMemory.h"

#include <QByteArray>
#include <QFile>
#include <malloc.h>

static qint64 residentBytes(const QByteArray &field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/status");
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf(field + ':');
    const qsizetype end = text.indexOf("kB", at);
    return text.mid(at + field.size() + 1, end - at - field.size() - 1).trimmed().toLongLong() * 1024;
}

PeakMemory::PeakMemory()
{
    malloc_trim(0);
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    // 5 sets the high-water mark back to what is resident now.
    if (!clear.open(QIODevice::WriteOnly) || clear.write("5") != 1)
        qFatal("the high-water mark cannot be reset");
    clear.close();
    before_ = residentBytes("VmRSS");
}

qint64 PeakMemory::peak() const
{
    return residentBytes("VmHWM") - before_;
}

qint64 PeakMemory::current() const
{
    return residentBytes("VmRSS") - before_;
}
