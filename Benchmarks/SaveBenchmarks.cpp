// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A save of a large domain to disk – whole, and without the encoding of its trees – beside what writing and
// syncing the same bytes takes.

#include "Benchmarks/SamplePresets.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qsizetype itemsPerPreset = 1000;

void BM_WriteAndSyncBytes(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QByteArray bytes =
        SamplePresets::domainBytes(SamplePresets::presets(state.range(0), itemsPerPreset));
    const QByteArray temporary = QFile::encodeName(folder.filePath(QStringLiteral("temporary")));
    const QByteArray target = QFile::encodeName(folder.filePath(QStringLiteral("target")));
    const int directory =
        open(QFile::encodeName(folder.path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (auto _ : state) {
        const int file = open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const bool ok =
            write(file, bytes.constData(), std::size_t(bytes.size())) == bytes.size() && fsync(file) == 0;
        close(file);
        if (!ok || std::rename(temporary.constData(), target.constData()) != 0 || fsync(directory) != 0)
            state.SkipWithError("the bytes could not be written");
    }
    close(directory);
    state.counters["document_bytes"] = double(bytes.size());
}

void BM_SavePreferences(benchmark::State &state)
{
    const QTemporaryDir folder;
    Preferences::Options options;
    options.folder = folder.path();
    options.lockFolder = folder.path();
    Preferences preferences(QStringLiteral("org.quenby.Quenby"), options);
    QNBSettings settings;
    settings.presets = SamplePresets::presets(state.range(0), itemsPerPreset);
    for (auto _ : state) {
        // What would not change would not be written.
        settings.shortcutCombo.code ^= 0x100;
        if (const Result<> saved = QNBSettingsStore::write(preferences, settings); !saved)
            state.SkipWithError(qPrintable(saved.error));
    }
    Preferences again(QStringLiteral("org.quenby.Quenby"), options);
    QNBSettings reread;
    if (!QNBSettingsStore::read(again, {}, reread))
        state.SkipWithError("the domain cannot be read");
    if (SamplePresets::countItems(reread.presets) != state.range(0))
        state.SkipWithError("items are missing");
}

/// What the window waits for each time that unsaved changes are kept; a thread does the rest.
void BM_SnapshotSettings(benchmark::State &state)
{
    QNBSettings settings;
    settings.presets = SamplePresets::presets(state.range(0), state.range(1));
    for (auto _ : state) {
        QNBSettingsSnapshot snapshot = QNBSettingsStore::snapshot(settings);
        benchmark::DoNotOptimize(snapshot);
        state.PauseTiming();
        snapshot = {};
        state.ResumeTiming();
    }
}

/// A part of that rest.
void BM_EncodeSettings(benchmark::State &state)
{
    QNBSettings settings;
    settings.presets = SamplePresets::presets(state.range(0), itemsPerPreset);
    const QNBSettingsSnapshot snapshot = QNBSettingsStore::snapshot(settings);
    for (auto _ : state) {
        EncodedPreference encoded = QNBSettingsStore::encode(snapshot);
        benchmark::DoNotOptimize(encoded.top);
    }
}

void BM_SynchronizePreferences(benchmark::State &state)
{
    const QTemporaryDir folder;
    Preferences::Options options;
    options.folder = folder.path();
    options.lockFolder = folder.path();
    Preferences preferences(QStringLiteral("org.quenby.Quenby"), options);
    const QList<QNBPresetRecordPtr> presets = SamplePresets::presets(state.range(0), itemsPerPreset);
    qlonglong number = 0;
    for (auto _ : state) {
        state.PauseTiming();
        EncodedPreference encoded;
        std::vector<BinaryPropertyListWriter::Ref> records;
        for (const QNBPresetRecordPtr &preset : presets)
            records.push_back(preset->encode(encoded.writer));
        encoded.top = encoded.writer.array(records);
        preferences.setAppValue(QNBPreferenceKey::presets, std::move(encoded));
        preferences.setAppValue(QNBPreferenceKey::hotKeyCode, number ^= 0x100);
        state.ResumeTiming();
        if (const Result<> saved = preferences.appSynchronize(); !saved)
            state.SkipWithError(qPrintable(saved.error));
    }
    Preferences again(QStringLiteral("org.quenby.Quenby"), options);
    PropertyListDocument::Ptr keepAlive;
    if (again.copyAppNode(QNBPreferenceKey::presets, &keepAlive).count() != presets.size())
        state.SkipWithError("presets are missing");
}

} // namespace

BENCHMARK(BM_WriteAndSyncBytes)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SavePreferences)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SnapshotSettings)
    ->ArgNames({"items", "items_per_preset"})
    ->ArgsProduct({{100'000}, {itemsPerPreset, 100'000}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_EncodeSettings)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SynchronizePreferences)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();
