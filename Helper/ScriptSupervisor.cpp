// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptSupervisor.h"

#include "Helper/ScriptEnvironment.h"
#include "Platform/Processes/ProcessStart.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using News = ScriptSupervisor::News;
using Report = ScriptSupervisor::Report;

/// Not the helper's own: who looks for the helper is to find none of these.
constexpr char processName[] = "QNBScript";
/// In seconds. What does not end by then belongs to somebody else, or waits for a disk that is gone.
constexpr time_t longestEnd = 10;
/// In milliseconds.
constexpr int endInterval = 5;
/// Another thread of this program may have started a process just when the script was written, which has the
/// file open for writing until it begins.
constexpr int mostTriesOfBusyFile = 200;

/// What the supervisor does. It is a copy of a program with threads, of which it has but one: it may use
/// nothing that another thread could have held at that moment, and so neither memory of the heap nor Qt.
class Supervision
{
public:
    Supervision(int socket, const char *program, char *const *arguments, char *const *environment,
                const ProcessStart &beginning)
        : socket_(socket)
        , program_(program)
        , arguments_(arguments)
        , environment_(environment)
        , beginning_(beginning)
    {
    }

    [[noreturn]] void run()
    {
        ::setpgid(0, 0);
        ::prctl(PR_SET_NAME, processName, 0, 0, 0);
        ::signal(SIGCHLD, SIG_DFL);
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGCHLD);
        signals_ = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
        if (signals_ == -1 || ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) == -1)
            end({News::CouldNotStart, errno});
        if (const int error = startScript())
            end({News::CouldNotStart, error});
        closeAllOthers();
        for (;;)
            waitOnce();
    }

private:
    [[noreturn]] void end(const Report &report) const
    {
        while (::send(socket_, &report, sizeof report, MSG_NOSIGNAL) == -1 && errno == EINTR) {
        }
        ::_exit(0);
    }

    static void pause()
    {
        timespec time{0, endInterval * 1000000};
        ::nanosleep(&time, nullptr);
    }

    int startScript()
    {
        int error = ETXTBSY;
        for (int tries = 0; error == ETXTBSY && tries < mostTriesOfBusyFile; ++tries) {
            if (tries > 0)
                pause();
            error = ::posix_spawn(&script_, program_, &beginning_.actions, &beginning_.attributes, arguments_,
                                  environment_);
        }
        return error;
    }

    /// The program's locks, and what others are to see closed when it ends.
    void closeAllOthers() const
    {
        const auto low = static_cast<unsigned>(std::min(socket_, signals_));
        const auto high = static_cast<unsigned>(std::max(socket_, signals_));
        if (low > 0)
            ::close_range(0, low - 1, 0);
        if (high > low + 1)
            ::close_range(low + 1, high - 1, 0);
        ::close_range(high + 1, std::numeric_limits<unsigned>::max(), 0);
    }

    void waitOnce()
    {
        std::array<pollfd, 2> files{{{signals_, POLLIN, 0}, {isAlone_ ? -1 : socket_, POLLIN, 0}}};
        if (::poll(files.data(), files.size(), -1) == -1)
            return;
        if (files[0].revents != 0) {
            std::array<signalfd_siginfo, 16> signals;
            while (::read(signals_, signals.data(), sizeof signals) > 0) {
            }
            reap();
            if (hasScriptEnded_)
                end({News::Ended, status_});
        }
        if (files[1].revents != 0) {
            char order = 0;
            const ssize_t size = ::recv(socket_, &order, sizeof order, 0);
            if (size > 0) {
                endAll();
                end({News::AllEnded, 0});
            }
            // Who started the script is gone; it goes on.
            isAlone_ = size == 0 || errno != EINTR;
        }
    }

    /// False when there are no children any more.
    bool reap()
    {
        int status = 0;
        for (;;) {
            const pid_t ended = ::waitpid(-1, &status, WNOHANG);
            if (ended <= 0)
                return ended == 0 || errno != ECHILD;
            if (ended == script_) {
                hasScriptEnded_ = true;
                status_ = status;
            }
        }
    }

    /// Whoever is ended leaves its children to this process. So it is enough to end those, over and over.
    void endAll()
    {
        timespec now = {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const time_t deadline = now.tv_sec + longestEnd;
        // At once: it is still there, for it has not been reaped.
        ::kill(-script_, SIGKILL);
        while (now.tv_sec <= deadline) {
            killChildren();
            if (!reap())
                return;
            pause();
            ::clock_gettime(CLOCK_MONOTONIC, &now);
        }
    }

    static void killChildren()
    {
        const int processes = ::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (processes == -1)
            return;
        // As the system call gives them: the library's reading of folders has to have memory.
        struct Entry
        {
            ino64_t number;
            off64_t offset;
            unsigned short size;
            unsigned char type;
            char name[1];
        };
        alignas(Entry) std::array<char, 32768> entries;
        for (;;) {
            const long size = ::syscall(SYS_getdents64, processes, entries.data(), entries.size());
            if (size <= 0)
                break;
            for (long at = 0; at < size;) {
                const char *entry = entries.data() + at;
                unsigned short entrySize = 0;
                std::memcpy(&entrySize, entry + offsetof(Entry, size), sizeof entrySize);
                at += entrySize;
                killIfChild(processes, entry + offsetof(Entry, name));
            }
        }
        ::close(processes);
    }

    /// A child that has ended keeps its number until it is reaped, which only this thread does: the process
    /// that is ended is the one that was looked at.
    static void killIfChild(int processes, const char *name)
    {
        const std::string_view digits(name);
        pid_t pid = 0;
        if (std::from_chars(digits.begin(), digits.end(), pid).ec != std::errc())
            return;
        constexpr std::string_view file = "/stat";
        std::array<char, 32> path{};
        if (digits.size() + file.size() >= path.size())
            return;
        std::copy(file.begin(), file.end(), std::copy(digits.begin(), digits.end(), path.begin()));
        const int stat = ::openat(processes, path.data(), O_RDONLY | O_CLOEXEC);
        if (stat == -1)
            return;
        std::array<char, 512> text;
        const ssize_t size = ::read(stat, text.data(), text.size());
        ::close(stat);
        // "12 (any name) S 11 …"
        const std::string_view line(text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        constexpr std::size_t fromNameToParent = 4;
        const std::size_t parentAt = line.rfind(')') + fromNameToParent;
        pid_t parent = 0;
        if (line.rfind(')') != std::string_view::npos && parentAt < line.size())
            std::from_chars(line.begin() + parentAt, line.end(), parent);
        if (parent == ::getpid())
            ::kill(pid, SIGKILL);
    }

    const int socket_;
    const char *const program_;
    char *const *const arguments_;
    char *const *const environment_;
    const ProcessStart &beginning_;
    int signals_ = -1;
    pid_t script_ = 0;
    bool hasScriptEnded_ = false;
    int status_ = 0;
    bool isAlone_ = false;
};

} // namespace

ScriptSupervisor::ScriptSupervisor(FileDescriptor socket, pid_t pid)
    : socket_(std::move(socket))
    , pid_(pid)
{
}

ScriptSupervisor::ScriptSupervisor(ScriptSupervisor &&other) noexcept
    : socket_(std::move(other.socket_))
    , pid_(std::exchange(other.pid_, 0))
{
}

ScriptSupervisor::~ScriptSupervisor()
{
    if (pid_ == 0)
        return;
    // It ends when it has told its news; it was read by now, or nobody is to wait for it.
    while (::waitpid(pid_, nullptr, 0) == -1 && errno == EINTR) {
    }
}

std::optional<ScriptSupervisor> ScriptSupervisor::start(const QByteArray &program,
                                                        const QByteArrayList &arguments,
                                                        const QByteArray &folder, int output, QString *error)
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == -1) {
        *error = qt_error_string(errno);
        return std::nullopt;
    }
    FileDescriptor own(FileLayer::real(), ends[0]);
    const FileDescriptor supervisors(FileLayer::real(), ends[1]);

    // All that needs memory is made before there are two.
    QByteArrayList words = QByteArrayList{program} + arguments;
    const std::vector<char *> pointers = ProcessStart::pointersTo(words);
    QByteArrayList assignments = ScriptEnvironment::assignments();
    const std::vector<char *> environment = ProcessStart::pointersTo(assignments);
    ProcessStart beginning;
    ::posix_spawn_file_actions_addopen(&beginning.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&beginning.actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&beginning.actions, output, STDERR_FILENO);
    ::posix_spawn_file_actions_addchdir_np(&beginning.actions, folder.constData());
    Supervision supervision(supervisors.get(), program.constData(), pointers.data(), environment.data(),
                            beginning);

    // No handler of this program is to run in the copy.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t pid = ::fork();
    if (pid == 0)
        supervision.run();
    const int errorNumber = errno;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (pid == -1) {
        *error = qt_error_string(errorNumber);
        return std::nullopt;
    }
    return ScriptSupervisor(std::move(own), pid);
}

ScriptSupervisor::Report ScriptSupervisor::read()
{
    Report report;
    ssize_t size = 0;
    do {
        size = ::recv(socket_.get(), &report, sizeof report, 0);
    } while (size == -1 && errno == EINTR);
    return size == sizeof report ? report : Report();
}

void ScriptSupervisor::endAll()
{
    constexpr char order = 0;
    ::send(socket_.get(), &order, sizeof order, MSG_NOSIGNAL);
    // It may have ended just now by itself: what it left running then goes on, as if a moment before.
    read();
}
