// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The processes of a name while so many others run, beside a bare pass over the kernel's table that opens,
// reads and closes the file with the name of each.

#include "Source/System/TQProcess.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

const QString helper = QStringLiteral("QNBHelper");
constexpr char helperLine[] = "QNBHelper\n";
constexpr char otherName[] = "QNBHelper2";

/// Processes that wait, of which the first and the last have the name looked for.
class Processes
{
public:
    explicit Processes(std::int64_t count)
    {
        std::array<int, 2> ready = {};
        if (::pipe2(ready.data(), O_CLOEXEC) == -1)
            return;
        for (std::int64_t i = 0; i < count; ++i) {
            const bool isHelper = i == 0 || i == count - 1;
            const pid_t child = ::fork();
            if (child == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                ::prctl(PR_SET_NAME, isHelper ? qPrintable(helper) : otherName);
                ::close(ready[0]);
                ::close(ready[1]);
                while (true)
                    ::pause();
            }
            if (child != -1)
                pids_.push_back(child);
        }
        // Its end is told when the last has its name.
        ::close(ready[1]);
        char byte = 0;
        while (::read(ready[0], &byte, 1) > 0) {
        }
        ::close(ready[0]);
    }
    ~Processes()
    {
        for (const pid_t pid : pids_)
            ::kill(pid, SIGKILL);
        for (const pid_t pid : pids_)
            ::waitpid(pid, nullptr, 0);
    }
    Processes(const Processes &) = delete;
    Processes &operator=(const Processes &) = delete;

    bool areThere(std::int64_t count) const { return std::int64_t(pids_.size()) == count; }
    pid_t first() const { return pids_.front(); }
    pid_t last() const { return pids_.back(); }

private:
    std::vector<pid_t> pids_;
};

int namesInTable()
{
    DIR *folder = ::opendir("/proc");
    int found = 0;
    while (const dirent *entry = ::readdir(folder)) {
        if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0)
            continue;
        std::array<char, sizeof(dirent::d_name) + sizeof "/comm"> path;
        std::snprintf(path.data(), path.size(), "%s/comm", entry->d_name);
        const int file = ::openat(::dirfd(folder), path.data(), O_RDONLY | O_CLOEXEC);
        if (file == -1)
            continue;
        std::array<char, 64> name;
        const ssize_t size = ::read(file, name.data(), name.size());
        ::close(file);
        found += size == ssize_t(std::strlen(helperLine)) &&
                 std::memcmp(name.data(), helperLine, std::size_t(size)) == 0;
    }
    ::closedir(folder);
    return found;
}

void BM_PassOverProcessNames(benchmark::State &state)
{
    const Processes processes(state.range(0));
    for (auto _ : state) {
        if (!processes.areThere(state.range(0)) || namesInTable() < 2) {
            state.SkipWithError("the processes are not there");
            break;
        }
    }
}

void BM_EveryProcessNamed(benchmark::State &state)
{
    const Processes processes(state.range(0));
    for (auto _ : state) {
        const QList<TQProcess> found = TQProcess::everyProcessNamed(helper);
        const auto holds = [&found](pid_t pid) {
            return std::any_of(found.begin(), found.end(), [pid](const TQProcess &process) {
                return process.processSerialNumber().low == quint32(pid);
            });
        };
        if (!processes.areThere(state.range(0)) || !holds(processes.first()) || !holds(processes.last())) {
            state.SkipWithError("not the processes of that name");
            break;
        }
    }
}

} // namespace

BENCHMARK(BM_PassOverProcessNames)->Arg(1'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EveryProcessNamed)->Arg(1'000)->Unit(benchmark::kMicrosecond);
