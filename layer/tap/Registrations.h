#ifndef SONOLET_LAYER_TAP_REGISTRATIONS_H
#define SONOLET_LAYER_TAP_REGISTRATIONS_H

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <unordered_map>

// What the plug-in has asked the library to call, and with which user data.
struct Registration {
    const void* handle;
    const void* callbacks;  // a function, or a record of functions
    void* userdata;
};

// The registrations of a process.
//
// The library gets a function of the layer and the registration's number in the place of the
// user data. Numbers are never used twice in a process, and what has been taken away is remembered
// for a while, so that a callback that comes late still finds its way.
//
// Threads: any. Ownership: nothing is owned, callbacks must stay where they are for as long as the
// library may call. It remembers the last 1024 that were taken away. Errors: none but
// std::bad_alloc.
class Registrations final {
public:
    // The number, in the form of user data.
    void* add(const Registration& registration);

    // The number under which the same was added last and not taken away; null: under none. Looks
    // through all; for calls that are rare.
    void* find(const Registration& registration) const;

    // Nothing will be asked for it any more, in good order. One that is not known is let pass.
    void remove(void* number);

    // Living or taken away not long ago; nothing for a number that was never given or is forgotten.
    std::optional<Registration> get(void* number) const;

    // The only ones of the process. Never freed: the library's threads may call during exit.
    static Registrations& all();

private:
    mutable std::mutex mutex;
    std::uintptr_t last = 0;
    std::unordered_map<std::uintptr_t, Registration> living;
    std::unordered_map<std::uintptr_t, Registration> gone;
    std::deque<std::uintptr_t> goneInOrder;
};

#endif
