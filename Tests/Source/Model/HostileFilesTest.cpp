// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Source/Model/HostileFiles.h"

#include "Benchmarks/PeakMemory.h"
#include "Source/Model/QNBPresetFile.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double mebibyte = 1024.0 * 1024;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double memoryMargin = 8;
constexpr double timeMargin = 40;
#elif defined(NDEBUG)
constexpr double memoryMargin = 1;
constexpr double timeMargin = 1;
#else
constexpr double memoryMargin = 1;
constexpr double timeMargin = 6;
#endif

/// What a process took for its work; nothing is left of it but this.
struct Cost
{
    double readMemory = 0;
    double readSeconds = 0;
    double bothMemory = 0;
    double writeSeconds = 0;
    qint64 items = 0;
    qint64 written = 0;
    bool isRead = false;
};

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

qint64 itemsOf(const QList<QNBPresetRecordPtr> &presets)
{
    std::vector<const QNBHierarchyItem *> toCount;
    for (const QNBPresetRecordPtr &preset : presets)
        toCount.push_back(preset->fileHierarchy().get());
    qint64 count = 0;
    for (; !toCount.empty(); ++count) {
        const QNBHierarchyItem *item = toCount.back();
        toCount.pop_back();
        for (const QNBHierarchyItemPtr &child : item->children())
            toCount.push_back(child.get());
    }
    return count;
}

/// Reads the file of the folder and writes it again, to the folder "again" there.
Cost readAndWrite(const QString &folder, bool isPreset)
{
    Cost cost;
    const PeakMemory memory;
    double start = processorSeconds();
    QList<QNBPresetRecordPtr> presets;
    Preferences preferences(QStringLiteral("hostile"), {.folder = folder, .lockFolder = folder});
    QNBSettings settings;
    if (isPreset) {
        if (const Result<QNBPresetRecordPtr> preset =
                QNBPresetFile::read(folder + QStringLiteral("/hostile.plist")))
            presets.append(*preset);
        cost.isRead = !presets.isEmpty();
    } else {
        const Result<> read = QNBSettingsStore::read(preferences, {}, settings);
        presets = settings.presets;
        cost.isRead = read && preferences.copyAppValue(QNBPreferenceKey::presetsStored).isValid();
    }
    cost.items = itemsOf(presets);
    cost.readSeconds = processorSeconds() - start;
    cost.readMemory = double(memory.peak());

    start = processorSeconds();
    if (cost.isRead && isPreset) {
        QString name;
        if (QNBPresetFile::write(*presets.constFirst(), folder + QStringLiteral("/again"), &name))
            cost.written = QFile(folder + QStringLiteral("/again/") + name).size();
    } else if (cost.isRead && QNBSettingsStore::write(preferences, settings)) {
        cost.written = QFile(preferences.path()).size();
    }
    cost.writeSeconds = processorSeconds() - start;
    cost.bothMemory = double(memory.peak());
    return cost;
}

/// The same in a process of its own.
Cost costOf(const HostileFile &file)
{
    const QTemporaryDir folder;
    QFile stored(folder.filePath(QStringLiteral("hostile.plist")));
    EXPECT_TRUE(stored.open(QIODevice::WriteOnly) && stored.write(file.bytes) == file.bytes.size());
    stored.close();
    EXPECT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("again")));
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        const Cost cost = readAndWrite(folder.path(), file.isPreset);
        _exit(write(ends[1], &cost, sizeof cost) == sizeof cost ? 0 : 1);
    }
    close(ends[1]);
    Cost cost;
    EXPECT_EQ(read(ends[0], &cost, sizeof cost), qint64(sizeof cost)) << file.name;
    close(ends[0]);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << file.name;
    return cost;
}

class HostileFiles : public testing::TestWithParam<int>
{
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Bytes, HostileFiles, testing::Values(10'000, 180'000, 1'800'000),
                         testing::PrintToStringParamName());

TEST_P(HostileFiles, AreReadAndWrittenAgainOrRefusedWithinTheLimitsOfMemoryAndTime)
{
    for (const HostileFile &file : hostileFiles(GetParam())) {
        const Cost cost = costOf(file);
        const double megabytes = double(file.bytes.size()) / 1e6;
        std::printf(
            "%-24s %-6s %8lld bytes: %s %7lld items; read %6.1f MiB %5.2f s; write %6.1f MiB %5.2f s; "
            "written %8lld bytes\n",
            file.name, file.isPreset ? "preset" : "domain", static_cast<long long>(file.bytes.size()),
            cost.isRead ? "read   " : "refused", static_cast<long long>(cost.items),
            cost.readMemory / mebibyte, cost.readSeconds, cost.bothMemory / mebibyte, cost.writeSeconds,
            static_cast<long long>(cost.written));
        EXPECT_EQ(cost.isRead, file.isRead) << file.name;
        EXPECT_EQ(cost.written > 0, file.isRead) << file.name;
        // What was shared still is, except for the items of a tree.
        EXPECT_LE(cost.written, 3 * file.bytes.size() + 1'000'000) << file.name;
        EXPECT_LE(cost.items, std::max<qint64>(10'000, file.bytes.size())) << file.name;
        EXPECT_LE(cost.bothMemory, memoryMargin * (64 * mebibyte + 40 * double(file.bytes.size())))
            << file.name;
        EXPECT_LE(cost.readSeconds, timeMargin * (0.2 + 2 * megabytes)) << file.name;
        EXPECT_LE(cost.writeSeconds, timeMargin * (0.2 + 2 * megabytes)) << file.name;
    }
}
