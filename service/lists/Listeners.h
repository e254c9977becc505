#ifndef SONOLET_SERVICE_LISTS_LISTENERS_H
#define SONOLET_SERVICE_LISTS_LISTENERS_H

#include <algorithm>
#include <cstdint>
#include <vector>

namespace sonolet::service {

// The callbacks that are registered with a handle: records of functions of the interface, each with
// what the program wants to be handed.
//
// While they are called any of them may be removed, and is then not called any more; one that was
// added after the audience was chosen hears nothing. A record that is registered twice is called
// twice, and removed once at a time.
//
// Threads: belongs to the thread that uses the library, on which callbacks come. Ownership: records
// and their data are the program's, and must stay until they are removed.
template <typename Record>
class Listeners final {
public:
    // It hears what is raised from here on.
    void add(const Record* record, void* userdata) {
        listeners.push_back({record, userdata, ++serial});
    }

    // The oldest of equal ones. False: it is not there.
    bool remove(const Record* record, const void* userdata) {
        const auto found =
            std::find_if(listeners.begin(), listeners.end(), [&](const Listener& listener) {
                return listener.record == record && listener.userdata == userdata;
            });
        if (found == listeners.end()) {
            return false;
        }
        listeners.erase(found);
        return true;
    }

    bool empty() const { return listeners.empty(); }

    // Who is to hear of something: those who were there when it happened, though it is told later.
    struct Audience {
        std::uint64_t first;
        std::uint64_t last;
    };
    Audience all() const { return {1, serial}; }
    // The one that was added last, alone.
    Audience newest() const { return {serial, serial}; }

    // Calls this function of each record of the audience that has it.
    template <typename... Parameters, typename... Arguments>
    void raise(Audience audience,
               void (*Record::*callback)(Parameters...),
               const Arguments&... arguments) const {
        for (std::uint64_t last = audience.first - 1; const Listener* next = after(last);) {
            // The call may change the list.
            const Listener listener = *next;
            last = listener.serial;
            if (last > audience.last) {
                return;
            }
            if (listener.record->*callback != nullptr) {
                (listener.record->*callback)(arguments..., listener.userdata);
            }
        }
    }

private:
    struct Listener {
        const Record* record;  // borrowed
        void* userdata;
        std::uint64_t serial;
    };

    // The first with a later serial, or NULL.
    const Listener* after(std::uint64_t last) const {
        const auto next = std::upper_bound(
            listeners.begin(), listeners.end(), last,
            [](std::uint64_t before, const Listener& other) { return before < other.serial; });
        return next == listeners.end() ? nullptr : &*next;
    }

    std::vector<Listener> listeners;  // in the order of their serials
    std::uint64_t serial = 0;
};

}  // namespace sonolet::service

#endif
