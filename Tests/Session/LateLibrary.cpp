// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What LateLibraryProgram.cpp loads: thread-local memory, so little that it can begin anywhere in a page.

namespace {

thread_local char memory[48];

} // namespace

extern "C" char *lateMemory()
{
    return memory;
}
