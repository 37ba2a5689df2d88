// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// From the start of the process to the first paint: an empty window as the measure, the host with the default
// presets, and the host with 100 presets of 1,000 items. The programs say themselves when they have painted.
// Windows are offscreen; with QT_QPA_PLATFORM=xcb they are on the display of the caller, for example of
// xvfb-run.
// --benchmark_enable_random_interleaving with --benchmark_repetitions has them start by turns. A program that
// is called like the helper runs meanwhile, so that no helper is started and waited for; there is no session
// bus.

#include "Benchmarks/SamplePresets.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <chrono>

namespace {

constexpr int startTimeout = 30'000;
/// What the programs say, with the time in nanoseconds of the clock that steady_clock reads.
const QByteArray reportPrefix = QByteArrayLiteral("first-paint-ns: ");

/// Starts the program in a home of its own until it has painted; the time that took, or none.
std::optional<std::chrono::duration<double>> timeToFirstPaint(const QString &program, const QString &home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/.local/state"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/.cache"));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home);
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    environment.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    QProcess process;
    process.setProcessEnvironment(environment);
    const auto start = std::chrono::steady_clock::now();
    process.start(program, QStringList());
    if (!process.waitForFinished(startTimeout))
        return std::nullopt;
    const QByteArray said = process.readAllStandardError();
    const qsizetype at = said.indexOf(reportPrefix);
    if (at < 0)
        return std::nullopt;
    const qsizetype number = at + reportPrefix.size();
    const std::chrono::nanoseconds painted(
        said.mid(number, said.indexOf('\n', number) - number).toLongLong());
    return painted - start.time_since_epoch();
}

void measureStart(benchmark::State &state, const QString &program, const QByteArray &domain)
{
    QTemporaryDir home;
    QProcess helper;
    const QString name = home.filePath(QStringLiteral("QNBHelper"));
    QFile::copy(QStringLiteral("/bin/sleep"), name);
    helper.start(name, {QStringLiteral("600")});
    if (!helper.waitForStarted())
        state.SkipWithError("no helper");
    QDir(home.path()).mkpath(QStringLiteral(".config"));
    if (!domain.isEmpty()) {
        QFile file(home.filePath(QStringLiteral(".config/org.quenby.Quenby.plist")));
        if (!file.open(QIODevice::WriteOnly) || file.write(domain) != domain.size())
            state.SkipWithError("no domain file");
    }
    for (auto _ : state) {
        const auto time = timeToFirstPaint(program, home.path());
        if (!time) {
            state.SkipWithError("the program did not paint");
            break;
        }
        state.SetIterationTime(time->count());
    }
    helper.kill();
    helper.waitForFinished();
}

void BM_StartEmptyWindow(benchmark::State &state)
{
    measureStart(state, QStringLiteral(QUENBY_EMPTY_WINDOW), {});
}

void BM_StartHost_DefaultPresets(benchmark::State &state)
{
    // A first start would make this choice itself, and store it.
    measureStart(state, QStringLiteral(QUENBY_HOST),
                 "<plist version=\"1.0\"><dict><key>QNBLaunchHelperOnStart</key><true/></dict></plist>");
}

void BM_StartHost_100Presets(benchmark::State &state)
{
    measureStart(state, QStringLiteral(QUENBY_HOST),
                 SamplePresets::domainBytes(SamplePresets::presets(100'000, 1'000)));
}

} // namespace

#define QUENBY_STARTS Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond)
BENCHMARK(BM_StartEmptyWindow)->QUENBY_STARTS;
BENCHMARK(BM_StartHost_DefaultPresets)->QUENBY_STARTS;
BENCHMARK(BM_StartHost_100Presets)->QUENBY_STARTS;
