// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// quenby-load-late-library LIBRARY: loads it in one process after the other, and each has the library's
// thread-local memory at another place of a page. Fails if one of them does, as by a report of the address
// sanitizer.

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// With what the sanitizer adds, each takes as much as that memory does; so many fill a page.
constexpr int blocksInPage = 64;
constexpr std::size_t blockSize = 40;

/// Not to be taken for leaks.
void *blocks[blocksInPage];

int useLibrary(const char *path, int blocksBefore)
{
    for (int i = 0; i < blocksBefore; ++i)
        blocks[i] = std::malloc(blockSize);
    void *const library = ::dlopen(path, RTLD_NOW);
    auto *const lateMemory =
        library ? reinterpret_cast<char *(*)()>(::dlsym(library, "lateMemory")) : nullptr;
    if (!lateMemory) {
        std::fprintf(stderr, "%s\n", ::dlerror());
        return EXIT_FAILURE;
    }
    *lateMemory() = 1;
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    int failed = 0;
    for (int i = 0; argc > 1 && i < blocksInPage; ++i) {
        const pid_t child = ::fork();
        if (child == 0)
            return useLibrary(argv[1], i);
        int status = 0;
        if (::waitpid(child, &status, 0) != child || status != 0)
            ++failed;
    }
    std::printf("%d processes failed\n", failed);
    return argc > 1 && failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
