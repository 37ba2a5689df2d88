// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array handledSignals = {SIGTERM, SIGINT, SIGHUP};

/// The pipe from the handler, which may do no more than write, to the event loop. It stays until the process
/// ends, as the handler does.
int readEnd = -1;
int writeEnd = -1;

void noteSignal(int number)
{
    const int savedError = errno;
    const char byte = char(number);
    // A full pipe holds enough signals already.
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
    errno = savedError;
}

} // namespace

TerminationSignals::TerminationSignals()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        qFatal("no pipe for signals: %s", std::strerror(errno));
    readEnd = ends[0];
    writeEnd = ends[1];
    for (const int number : handledSignals) {
        struct sigaction previous = {};
        ::sigaction(number, nullptr, &previous);
        // Started by nohup: the end of the terminal is not ours.
        if (number == SIGHUP && previous.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        action.sa_flags = SA_RESTART;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(number, &action, nullptr);
    }
}

bool TerminationSignals::hasUnhandled()
{
    char number = 0;
    return ::read(readEnd, &number, 1) == 1;
}

void TerminationSignals::handleWith(std::function<void()> handler)
{
    notifier_ = std::make_unique<QSocketNotifier>(readEnd, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [handler = std::move(handler)] {
                         char bytes[64];
                         while (::read(readEnd, bytes, sizeof bytes) > 0) {
                         }
                         handler();
                     });
}
