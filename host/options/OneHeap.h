#ifndef SONOLET_HOST_OPTIONS_ONEHEAP_H
#define SONOLET_HOST_OPTIONS_ONEHEAP_H

#include <malloc.h>

// Lets all threads of this process share the C library's first heap. It gives threads heaps of
// their own, eight for each processor at most; each track starts threads anew, on whichever heap is
// next, and what outlives them keeps pages of all of them: hours pass until every heap is as large
// as it gets. For programs, which may decide such a thing; the script engine has an allocator of
// its own. Called before the first thread that plays; heaps that are there already stay. Without
// effect on other C libraries than glibc.
inline void useOneHeap() noexcept {
#ifdef M_ARENA_MAX
    mallopt(M_ARENA_MAX, 1);
#endif
}

#endif
