// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Reading and writing of whole domains and preset files, beside the time that libplist needs for the bare
// parse of the same bytes (no trees and no identifiers built). Compare BM_X/N with BM_LibplistParse…/N of the
// same run.

#include "Benchmarks/PeakMemory.h"
#include "Benchmarks/SamplePresets.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Source/Model/QNBSettingsStore.h"

#include <benchmark/benchmark.h>
#include <plist/plist.h>

namespace {

constexpr qsizetype itemsPerPreset = 1000;

QList<QNBPresetRecordPtr> readPresets(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &error);
    if (!document)
        return {};
    const PropertyListNode array = document->root().value(QNBPreferenceKey::presets);
    QList<QNBPresetRecordPtr> presets;
    presets.reserve(array.count());
    for (qsizetype i = 0; i < array.count(); ++i)
        presets.append(QNBPresetRecord::fromStored(array.at(i)));
    return presets;
}

QByteArray archiveBytes(const QNBPresetRecord &record)
{
    KeyedArchiver archiver;
    return archiver.finish(record.encode(archiver)).bytes.value_or(QByteArray());
}

QNBPresetRecordPtr unarchivePreset(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(bytes, &error);
    return document ? QNBPresetRecord::fromStored(document->root()) : nullptr;
}

void report(benchmark::State &state, qsizetype bytes)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["document_bytes"] = double(bytes);
}

void libplistParse(benchmark::State &state, const QByteArray &bytes)
{
    for (auto _ : state) {
        plist_t list = nullptr;
        plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &list);
        state.PauseTiming();
        if (!list || plist_get_node_type(list) != PLIST_DICT)
            state.SkipWithError("libplist did not read the bytes");
        plist_free(list);
        state.ResumeTiming();
    }
    report(state, bytes.size());
}

void BM_LibplistParsePreferences(benchmark::State &state)
{
    libplistParse(state, SamplePresets::domainBytes(SamplePresets::presets(state.range(0), itemsPerPreset)));
}

void BM_ReadPreferences(benchmark::State &state)
{
    const QByteArray bytes =
        SamplePresets::domainBytes(SamplePresets::presets(state.range(0), itemsPerPreset));
    for (auto _ : state) {
        QList<QNBPresetRecordPtr> presets = readPresets(bytes);
        state.PauseTiming();
        if (SamplePresets::countItems(presets) != state.range(0))
            state.SkipWithError("items are missing");
        presets.clear();
        state.ResumeTiming();
    }
    report(state, bytes.size());
}

void BM_WritePreferences(benchmark::State &state)
{
    const QList<QNBPresetRecordPtr> presets = SamplePresets::presets(state.range(0), itemsPerPreset);
    QByteArray bytes;
    for (auto _ : state) {
        bytes = SamplePresets::domainBytes(presets);
        benchmark::DoNotOptimize(bytes.constData());
    }
    if (SamplePresets::countItems(readPresets(bytes)) != state.range(0))
        state.SkipWithError("items are missing");
    report(state, bytes.size());
}

void BM_LibplistParsePreset(benchmark::State &state)
{
    const qsizetype items = state.range(0);
    libplistParse(state, archiveBytes(*SamplePresets::presets(items, items).constFirst()));
}

void BM_UnarchivePreset(benchmark::State &state)
{
    const qsizetype items = state.range(0);
    const QByteArray bytes = archiveBytes(*SamplePresets::presets(items, items).constFirst());
    for (auto _ : state) {
        QNBPresetRecordPtr preset = unarchivePreset(bytes);
        state.PauseTiming();
        if (!preset || SamplePresets::countItems({preset}) != items)
            state.SkipWithError("items are missing");
        preset.reset();
        state.ResumeTiming();
    }
    report(state, bytes.size());
}

void BM_ArchivePreset(benchmark::State &state)
{
    const qsizetype items = state.range(0);
    const QNBPresetRecordPtr preset = SamplePresets::presets(items, items).constFirst();
    QByteArray bytes;
    for (auto _ : state) {
        bytes = archiveBytes(*preset);
        benchmark::DoNotOptimize(bytes.constData());
    }
    const QNBPresetRecordPtr again = unarchivePreset(bytes);
    if (!again || SamplePresets::countItems({again}) != items)
        state.SkipWithError("items are missing");
    report(state, bytes.size());
}

/// The bytes of memory for each item: of the trees, and at the height of reading them from a domain's bytes.
void BM_MemoryOfReadPreferences(benchmark::State &state)
{
    const QByteArray bytes =
        SamplePresets::domainBytes(SamplePresets::presets(state.range(0), itemsPerPreset));
    for (auto _ : state) {
        PeakMemory memory;
        const QByteArray ownBytes(bytes.constData(), bytes.size());
        const QList<QNBPresetRecordPtr> presets = readPresets(ownBytes);
        if (SamplePresets::countItems(presets) != state.range(0))
            state.SkipWithError("items are missing");
        state.counters["peak_bytes_per_item"] = double(memory.peak()) / double(state.range(0));
    }
}

void BM_MemoryOfTrees(benchmark::State &state)
{
    for (auto _ : state) {
        PeakMemory memory;
        const QList<QNBPresetRecordPtr> presets = SamplePresets::presets(state.range(0), itemsPerPreset);
        if (SamplePresets::countItems(presets) != state.range(0))
            state.SkipWithError("items are missing");
        state.counters["tree_bytes_per_item"] = double(memory.current()) / double(state.range(0));
    }
}

} // namespace

#define QUENBY_SIZES Arg(1'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_LibplistParsePreferences)->QUENBY_SIZES;
BENCHMARK(BM_ReadPreferences)->QUENBY_SIZES;
BENCHMARK(BM_WritePreferences)->QUENBY_SIZES;
BENCHMARK(BM_LibplistParsePreset)->QUENBY_SIZES;
BENCHMARK(BM_UnarchivePreset)->QUENBY_SIZES;
BENCHMARK(BM_ArchivePreset)->QUENBY_SIZES;
BENCHMARK(BM_MemoryOfTrees)->Arg(100'000)->Iterations(1);
BENCHMARK(BM_MemoryOfReadPreferences)->Arg(100'000)->Iterations(1);
