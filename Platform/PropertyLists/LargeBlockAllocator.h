// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <vector>

/// Asks the system for large pages where \a block spans them. Advice: nothing depends on it.
inline void adviseLargePages(void *block, std::size_t size)
{
    constexpr std::size_t page = std::size_t(2) * 1024 * 1024;
    if (std::align(page, page, block, size))
        madvise(block, size / page * page, MADV_HUGEPAGE);
}

/// For arrays that may grow to many megabytes: blocks of that size are asked for in large pages, where the
/// system has them. A document of a million items else spends more time on faults of small pages than on its
/// content.
template <class T>
class LargeBlockAllocator
{
public:
    using value_type = T;

    LargeBlockAllocator() = default;
    template <class U>
    explicit LargeBlockAllocator(const LargeBlockAllocator<U> &)
    {
    }

    T *allocate(std::size_t count)
    {
        const std::size_t size = count * sizeof(T);
        void *const block =
            size < largePage ? std::malloc(size)
                             : std::aligned_alloc(largePage, (size + largePage - 1) / largePage * largePage);
        if (size >= largePage)
            adviseLargePages(block, size);
        if (!block)
            throw std::bad_alloc();
        return static_cast<T *>(block);
    }
    void deallocate(T *block, std::size_t) { std::free(block); }

    friend bool operator==(const LargeBlockAllocator &, const LargeBlockAllocator &) { return true; }

private:
    static constexpr std::size_t largePage = std::size_t(2) * 1024 * 1024;
};

template <class T>
using LargeArray = std::vector<T, LargeBlockAllocator<T>>;

/// Room for \a more elements. A large array grows by large steps: pages that are reserved and not yet used
/// cost nothing, while each move to a larger block touches all of both. A small one is left to grow by
/// itself.
template <class T>
void makeRoom(LargeArray<T> &array, std::size_t more)
{
    constexpr std::size_t largeSize = std::size_t(1024) * 1024;
    constexpr std::size_t step = 8;
    const std::size_t needed = array.size() + more;
    if (needed > array.capacity() && needed * sizeof(T) >= largeSize)
        array.reserve(step * needed);
}
