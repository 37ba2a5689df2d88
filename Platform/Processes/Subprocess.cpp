// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/Subprocess.h"

#include "Platform/Files/FileLayer.h"
#include "Platform/Processes/ChildEnvironment.h"
#include "Platform/Processes/ProcessStart.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

/// Waits for the end of the child in the event loop, whoever started it being gone or not.
class Subprocess::Watch final : public QObject
{
public:
    Watch(pid_t pid, int descriptor)
        : QObject(QCoreApplication::instance())
        , pid_(pid)
        , descriptor_(descriptor)
        , notifier_(descriptor, QSocketNotifier::Read)
    {
        connect(&notifier_, &QSocketNotifier::activated, this, [this] { end(); });
    }
    ~Watch() override
    {
        notifier_.setEnabled(false);
        ::close(descriptor_);
        // What it holds may hold the Subprocess that looks here: it goes while all the rest is there.
        const EndHandler handler = std::exchange(handler_, {});
    }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    bool isRunning() const { return isRunning_; }
    void setHandler(EndHandler handler) { handler_ = std::move(handler); }
    bool signal(int number) const
    {
        return isRunning_ && ::syscall(SYS_pidfd_send_signal, descriptor_, number, nullptr, 0) == 0;
    }

private:
    void end()
    {
        int status = 0;
        while (::waitpid(pid_, &status, 0) == -1 && errno == EINTR) {
        }
        isRunning_ = false;
        notifier_.setEnabled(false);
        deleteLater();
        if (const EndHandler handler = std::exchange(handler_, {}))
            handler(status);
    }

    const pid_t pid_;
    const int descriptor_;
    bool isRunning_ = true;
    QSocketNotifier notifier_;
    EndHandler handler_;
};

namespace {

QByteArrayList environmentWith(const QByteArrayList &assignments)
{
    // Of two assignments to one name the first one counts.
    QByteArrayList all = assignments;
    const QByteArrayList ours = ChildEnvironment::assignments();
    for (const QByteArray &inherited : ours) {
        const QByteArray name = inherited.left(inherited.indexOf('=') + 1);
        const bool isReplaced =
            std::any_of(assignments.begin(), assignments.end(),
                        [&name](const QByteArray &replacing) { return replacing.startsWith(name); });
        if (!isReplaced)
            all.append(inherited);
    }
    return all;
}

Result<> failure(const QByteArray &program, int errorNumber)
{
    return Result<>::failure(
        systemError(QStringLiteral("cannot start %1").arg(QFile::decodeName(program)), errorNumber));
}

} // namespace

Subprocess::~Subprocess()
{
    closeInput();
    setEndHandler({});
    for (const int descriptor : {output_, errors_}) {
        if (descriptor != -1)
            ::close(descriptor);
    }
}

Result<> Subprocess::start(const QByteArray &program, const QByteArrayList &arguments,
                           const QByteArrayList &environment)
{
    // A socket, because writing to a pipe that nobody reads any more would end this process.
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == -1)
        return failure(program, errno);
    input_ = ends[0];

    QByteArrayList words = QByteArrayList{program} + arguments;
    QByteArrayList assignments = environmentWith(environment);
    ProcessStart beginning;
    ::posix_spawn_file_actions_adddup2(&beginning.actions, ends[1], STDIN_FILENO);
    if (keepsOutput_) {
        output_ = ::memfd_create("output", MFD_CLOEXEC);
        errors_ = ::memfd_create("errors", MFD_CLOEXEC);
    }
    const auto lead = [&beginning](int stream, int kept) {
        if (kept != -1)
            ::posix_spawn_file_actions_adddup2(&beginning.actions, kept, stream);
        else
            ::posix_spawn_file_actions_addopen(&beginning.actions, stream, "/dev/null", O_WRONLY, 0);
    };
    lead(STDOUT_FILENO, output_);
    lead(STDERR_FILENO, errors_);
    const int error =
        ::posix_spawn(&pid_, program.constData(), &beginning.actions, &beginning.attributes,
                      ProcessStart::pointersTo(words).data(), ProcessStart::pointersTo(assignments).data());
    ::close(ends[1]);
    if (error != 0) {
        closeInput();
        return failure(program, error);
    }

    const auto descriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
    if (descriptor == -1) {
        const int errorNumber = errno;
        closeInput();
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        return failure(program, errorNumber);
    }
    watch_ = new Watch(pid_, descriptor);
    return {};
}

QByteArray Subprocess::kept(int descriptor, qsizetype limit)
{
    QByteArray bytes(limit, Qt::Uninitialized);
    const ssize_t size = ::pread(descriptor, bytes.data(), static_cast<std::size_t>(limit), 0);
    bytes.resize(std::max<qsizetype>(size, 0));
    return bytes;
}

bool Subprocess::isRunning() const
{
    return watch_ && watch_->isRunning();
}

void Subprocess::setEndHandler(EndHandler handler)
{
    if (watch_)
        watch_->setHandler(std::move(handler));
}

bool Subprocess::write(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    return input_ != -1 && ::send(input_, bytes.constData(), size, MSG_NOSIGNAL) == bytes.size();
}

void Subprocess::closeInput()
{
    if (input_ != -1)
        ::close(std::exchange(input_, -1));
}

bool Subprocess::signal(int number)
{
    return watch_ && watch_->signal(number);
}
