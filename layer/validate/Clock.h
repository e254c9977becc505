#ifndef SONOLET_LAYER_VALIDATE_CLOCK_H
#define SONOLET_LAYER_VALIDATE_CLOCK_H

#include <cstdint>

// Time as rules see it. Tests have their own.
struct Clock {
    virtual ~Clock() = default;
    virtual std::uint64_t now() const = 0;  // ns, from any beginning
    // Of what has passed, the ns in which the calling thread ran, or waited for a processor: a busy
    // page or machine is no fault of the browser.
    virtual std::uint64_t busy() const = 0;
};

// The system's. CLOCK_MONOTONIC, and the kernel's schedstat of the thread; without it busy() is 0.
// Any thread; never freed.
const Clock& systemClock();

#endif
