// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What the helper costs while nobody needs it, beside a bare program with an icon in the tray: memory, and
// how often it wakes up. Each is started in a session of its own, with a tray, a bus and a screen.

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/FakeTray.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/TemporaryHome.h"
#include "Tests/Session/VirtualScreen.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <thread>

namespace {

/// So long it has to be quiet before it counts as idle.
constexpr std::chrono::seconds quiet(2);
constexpr std::chrono::seconds watched(10);
constexpr int mostTurns = 30;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number behind \a label in a file of the kernel's.
qint64 numberAfter(const QByteArray &text, const QByteArray &label)
{
    const qsizetype start = text.indexOf(label);
    if (start == -1)
        return 0;
    const qsizetype number = start + label.size();
    return text.mid(number, text.indexOf('\n', number) - number).replace("kB", "").trimmed().toLongLong();
}

/// Of all its threads: how often they have waited for something.
qint64 wakeUps(qint64 pid)
{
    qint64 sum = 0;
    const QString folder = QStringLiteral("/proc/%1/task/").arg(pid);
    for (const QString &thread : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        sum +=
            numberAfter(contentOf(folder + thread + QStringLiteral("/status")), "\nvoluntary_ctxt_switches:");
    return sum;
}

/// Waits until it does nothing; false if that never happens.
bool waitUntilQuiet(qint64 pid)
{
    for (int turn = 0; turn < mostTurns; ++turn) {
        const qint64 before = wakeUps(pid);
        std::this_thread::sleep_for(quiet);
        if (wakeUps(pid) == before)
            return true;
    }
    return false;
}

void measureIdle(benchmark::State &state, const QString &program)
{
    for (auto _ : state) {
        const TemporaryHome home;
        const PrivateBus bus;
        const VirtualScreen screen(home);
        const FakeTray tray(bus.address());
        ChildProcess process(program, {}, screen.environmentFrom(home.environment(bus.address())));
        if (!waitUntil([&] { return tray.hasItem(); }) || !waitUntilQuiet(process.pid())) {
            state.SkipWithError("it is not in the tray, or never idle");
            return;
        }
        const qint64 before = wakeUps(process.pid());
        std::this_thread::sleep_for(watched);
        state.counters["wakeUpsIn10s"] = double(wakeUps(process.pid()) - before);
        const QByteArray memory = contentOf(QStringLiteral("/proc/%1/smaps_rollup").arg(process.pid()));
        state.counters["residentKB"] = double(numberAfter(memory, "\nRss:"));
        state.counters["ownKB"] = double(numberAfter(memory, "\nAnonymous:"));
        process.signal(SIGTERM);
        process.waitForEnd();
    }
}

void BM_IdleBareTray(benchmark::State &state)
{
    measureIdle(state, QStringLiteral(QUENBY_BARE_TRAY));
}

void BM_IdleHelper(benchmark::State &state)
{
    measureIdle(state, QStringLiteral(QUENBY_HELPER));
}

} // namespace

BENCHMARK(BM_IdleBareTray)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IdleHelper)->Iterations(1)->Unit(benchmark::kMillisecond);
