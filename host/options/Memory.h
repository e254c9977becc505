#ifndef SONOLET_HOST_OPTIONS_MEMORY_H
#define SONOLET_HOST_OPTIONS_MEMORY_H

#include <malloc.h>

// How a program whose pages play for days uses the C library's heap. Without effect on other C
// libraries than glibc, and on the script engine, which has an allocator of its own.
namespace memory {

// One heap for all threads, and blocks of 128 KiB and more beside it. Else threads get heaps of
// their own, eight for each processor at most; each track starts threads anew, on whichever heap is
// next, and what outlives them keeps pages of all: hours pass until each is as large as it gets.
// Large blocks move into the heap, too, once one was freed. Called before the first thread that
// plays; heaps that are there already stay.
inline void shareOneHeap() noexcept {
#ifdef M_ARENA_MAX
    constexpr int largeBlock = 128 << 10;
    // NOLINTBEGIN(concurrency-mt-unsafe): nobody else sets them
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, largeBlock);
    // NOLINTEND(concurrency-mt-unsafe)
#endif
}

// Gives the system what lies free between blocks, as behind a page. Takes about a millisecond.
inline void giveBack() noexcept {
#ifdef M_ARENA_MAX
    malloc_trim(0);
#endif
}

}  // namespace memory

#endif
