// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Says "ready" and waits to be ended.
//
//     quenby-idle [deaf | headless | named BYTES_IN_HEX | gone]
//
// deaf: does not listen to SIGTERM.
// headless: its first thread has ended, another goes on.
// named: under that name instead of its file's.
// gone: does not wait.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int usage = 64;

std::string bytesOf(std::string_view hex)
{
    std::string bytes;
    for (; hex.size() >= 2; hex.remove_prefix(2))
        bytes += char(std::strtol(std::string(hex.substr(0, 2)).c_str(), nullptr, 16));
    return bytes;
}

void wait()
{
    std::puts("ready");
    std::fflush(stdout);
    while (true)
        ::pause();
}

} // namespace

int main(int argc, char **argv)
{
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "deaf")
        std::signal(SIGTERM, SIG_IGN);
    else if (command == "named" && argc > 2)
        ::prctl(PR_SET_NAME, bytesOf(argv[2]).c_str());
    else if (command == "gone")
        return 0;
    else if (command == "headless") {
        std::thread(wait).detach();
        ::pthread_exit(nullptr);
    } else if (!command.empty())
        return usage;
    wait();
}
