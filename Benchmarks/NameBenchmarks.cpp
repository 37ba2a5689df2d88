// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The unique name among so many siblings "Untitled", "Untitled-1" …, beside one pass over the names that
// compares each with the name wanted, without regard to case; and what an index of the names costs and gives.

#include "Benchmarks/SamplePresets.h"
#include "Source/Model/QNBUniqueName.h"

#include <benchmark/benchmark.h>

namespace {

const QString untitled = QStringLiteral("Untitled");

void BM_PassOverNames(benchmark::State &state)
{
    const QNBPresetRecordPtr preset = SamplePresets::flatPreset(state.range(0));
    const QNBHierarchyItem &level = *preset->fileHierarchy();
    for (auto _ : state) {
        qsizetype same = 0;
        for (const QNBHierarchyItemPtr &child : level.children())
            same += child->filename().compare(untitled, Qt::CaseInsensitive) == 0;
        if (same != 1) {
            state.SkipWithError("the name is not there once");
            break;
        }
    }
}

void BM_UniqueName(benchmark::State &state)
{
    const QNBPresetRecordPtr preset = SamplePresets::flatPreset(state.range(0));
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    const QString expected = QStringLiteral("Untitled-%1").arg(state.range(0));
    for (auto _ : state) {
        if (uniqueNameForLevel(*preset->fileHierarchy(), untitled, item.get()) != expected) {
            state.SkipWithError("not the first free name");
            break;
        }
    }
}

/// What the first rename in a large folder takes besides.
void BM_IndexChildNames(benchmark::State &state)
{
    const QNBPresetRecordPtr preset = SamplePresets::flatPreset(state.range(0));
    QNBHierarchyItem &level = *preset->fileHierarchy();
    for (auto _ : state) {
        level.indexChildNames();
        if (!level.childNames()) {
            state.SkipWithError("there is no index");
            break;
        }
        state.PauseTiming();
        level.dropChildNames();
        state.ResumeTiming();
    }
}

/// A name that is taken, in a folder with an index of the names.
void BM_UniqueNameByIndex(benchmark::State &state)
{
    const QNBPresetRecordPtr preset = SamplePresets::flatPreset(state.range(0));
    QNBHierarchyItem &level = *preset->fileHierarchy();
    level.indexChildNames();
    for (auto _ : state) {
        if (uniqueNameForLevel(level, QStringLiteral("UNTITLED-7"), nullptr) != u"UNTITLED-7-1") {
            state.SkipWithError("not the first free name");
            break;
        }
    }
}

} // namespace

#define QUENBY_SIZES Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond)
BENCHMARK(BM_PassOverNames)->QUENBY_SIZES;
BENCHMARK(BM_UniqueName)->QUENBY_SIZES;
BENCHMARK(BM_IndexChildNames)->QUENBY_SIZES;
BENCHMARK(BM_UniqueNameByIndex)->QUENBY_SIZES;
