// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The creation of a tree in an empty folder, beside bare system calls in a loop and beside the system's tar
// that unpacks the same tree: by turns, in each iteration. The time of an iteration is that of the creation
// with its plan. "bare" and "tar" say how many times the time of the other that is (the goals are 1.3 and
// 1.0), "planning" which part of it the plan takes (at most 0.1), "journal" by which part it takes longer
// than without the journal that is written ahead and then kept (less than 0.02); each from the medians of its
// times.
//
// On a disk nothing is removed before all is measured: ext4 passes by each inode that was freed in the last
// minute when it looks for a free one, so that a tree takes twenty times as long where another has just been
// removed, whoever makes it. And nothing of what was made before is still to be written.

#include "Benchmarks/CreationTree.h"
#include "Helper/Creation/Execution.h"
#include "Helper/Journals.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString memoryFolder = QStringLiteral("/dev/shm");
const QString folderTemplate = QStringLiteral("/quenby-benchmark-XXXXXX");

/// Runs a program that needs no shell, as cheaply as one can be run.
bool run(const std::vector<const char *> &arguments)
{
    const pid_t child = ::vfork();
    if (child == 0) {
        ::execvp(arguments.front(), const_cast<char *const *>(arguments.data()));
        ::_exit(127);
    }
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

template <typename Work>
double secondsOf(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> &times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// The tree, an empty folder for each way to make it, and the archive.
class Ground
{
public:
    explicit Ground(benchmark::State &state)
        : state_(state)
        , isOnDisk_(state.range(1) != 0)
        , folder_((isOnDisk_ ? QDir::tempPath() : memoryFolder) + folderTemplate)
        , tree_(int(state.range(0)), folder_.path())
    {
    }

    const CreationTree &tree() const { return tree_; }
    QString target() const { return folder_.filePath(QString::number(targets_)); }
    QByteArray targetPath() const { return QFile::encodeName(target()); }
    QByteArray archive() const { return QFile::encodeName(folder_.filePath(QStringLiteral("tree.tar"))); }
    Creation::Plan plan() const
    {
        return Creation::plan(*tree_.root(), target(), {Creation::OnConflict::UniqueName, folder_.path()});
    }
    Journals journals() const { return Journals(folder_.filePath(QStringLiteral("state"))); }

    /// The seconds that \a make takes in an empty folder. What it made is looked at.
    template <typename Make>
    double time(Make make)
    {
        ++targets_;
        bool ok = QDir().mkdir(target());
        if (isOnDisk_)
            ::sync();
        const double seconds = secondsOf([&] { ok = make() && ok; });
        ok = tree_.isIn(targetPath()) && ok;
        if (!hasArchive_)
            hasArchive_ =
                run({"tar", "-cf", archive().constData(), "-C", targetPath().constData(), ".", nullptr});
        if (!isOnDisk_)
            ok = QDir(target()).removeRecursively() && ok;
        if (!ok)
            state_.SkipWithError("the tree was not made");
        return seconds;
    }

private:
    benchmark::State &state_;
    const bool isOnDisk_;
    const QTemporaryDir folder_;
    const CreationTree tree_;
    int targets_ = 0;
    bool hasArchive_ = false;
};

void BM_Create(benchmark::State &state)
{
    Ground ground(state);
    std::vector<double> whole;
    std::vector<double> unjournaled;
    std::vector<double> planning;
    std::vector<double> bare;
    std::vector<double> tar;
    for (auto _ : state) {
        bare.push_back(ground.time([&] { return ground.tree().makeWithBareCalls(ground.targetPath()); }));
        // The one that comes first is another one each time.
        const bool isFirst = unjournaled.size() % 2 == 0;
        const auto createUnjournaled = [&] {
            unjournaled.push_back(ground.time([&] { return Creation::execute(ground.plan()).succeeded; }));
        };
        if (isFirst)
            createUnjournaled();
        whole.push_back(ground.time([&] {
            Creation::Plan plan;
            planning.push_back(secondsOf([&] { plan = ground.plan(); }));
            const auto journal = ground.journals().begin({QStringLiteral("id"), {}, 0, false, plan});
            return journal && Creation::execute(plan, {}, journal->get()).succeeded &&
                   ground.journals().remove((*journal)->path());
        }));
        if (!isFirst)
            createUnjournaled();
        tar.push_back(ground.time([&] {
            return run(
                {"tar", "-xf", ground.archive().constData(), "-C", ground.targetPath().constData(), nullptr});
        }));
        state.SetIterationTime(whole.back());
    }
    const double seconds = median(whole);
    state.counters["bare"] = seconds / median(bare);
    state.counters["tar"] = seconds / median(tar);
    state.counters["planning"] = median(planning) / seconds;
    state.counters["journal"] = seconds / median(unjournaled) - 1;
    state.counters["items/s"] = ground.tree().items() / seconds;
}

} // namespace

BENCHMARK(BM_Create)
    ->ArgNames({"items", "disk"})
    ->ArgsProduct({{10'000}, {0, 1}})
    ->UseManualTime()
    ->Iterations(11)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Create)
    ->Name("BM_CreateMany")
    ->ArgNames({"items", "disk"})
    ->ArgsProduct({{1'000, 100'000, 1'000'000}, {0}})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
