// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Part of every program that is built with the address sanitizer: what it is told before ASAN_OPTIONS are
// read.

/// The thread-local memory of a library that is loaded late, as what runs in the background is, comes from
/// malloc(), and the sanitizer guesses its size from what stands before it. It mistakes its own notes for
/// that size if the memory begins 16 bytes into a page, and its leak checker then reads nowhere and ends
/// ("Tracer caught signal 11"). Without the guess that memory is searched for pointers as any other.
extern "C" const char *__asan_default_options()
{
    return "intercept_tls_get_addr=0";
}
