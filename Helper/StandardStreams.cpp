// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/StandardStreams.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

void StandardStreams::occupyClosed()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest number that is free is taken, which is this one.
        if (::fcntl(stream, F_GETFD) == -1)
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void StandardStreams::outliveReaders()
{
    std::signal(SIGPIPE, SIG_IGN);
}
