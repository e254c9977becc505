#ifndef SONOLET_TESTS_FAULT_ALLOCATIONS_H
#define SONOLET_TESTS_FAULT_ALLOCATIONS_H

#include <cstddef>

// The memory that the plug-in holds: what was allocated inside it (see Faults.h) and is not free
// yet. A program that links this has these counting allocation functions; each allocation is a
// point that can fail. One thread.
struct Allocations {
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    static Allocations held();
};

#endif
