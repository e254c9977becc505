#ifndef SONOLET_LAYER_CALLS_STORY_H
#define SONOLET_LAYER_CALLS_STORY_H

#include "calls/Event.h"

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

// What belongs together among the calls: which call of a listener goes back to which event, which
// sound to which request, and how much of everything there is.
//
// No number in the interfaces goes from an event to its listener, so it is found by name:
// "playlist_renamed" of the library is "PlaylistRenamed" of script, and a listener's call is led
// back to the earliest event of its name that the listener has not been called for. Queries are
// followed by the number of their registration.
//
// Threads: one. Units: nanoseconds, bytes. Memory: the latest 512 causes, and at most 4096
// functions of the page; what is not among them has no arrow. Errors: none.
class Story final {
public:
    // A place in the trace: within the slice that begins there. Threads by the system's number.
    struct Place {
        std::uint32_t thread;
        std::uint64_t time;  // ns
    };
    // An arrow from a cause to what came of it.
    struct Arrow {
        std::string name;
        Place from;
        Place to;
    };
    // What the numbers are now. None is meant to be below 0; a trace that lost calls may show it.
    struct Levels {
        std::int64_t ringBytes = 0;        // delivered and not yet written to the backend
        std::int64_t waitingRequests = 0;  // of the backend
        std::int64_t handles = 0;          // references that the plug-in owns
        bool operator==(const Levels& other) const {
            return ringBytes == other.ringBytes && waitingRequests == other.waitingRequests &&
                   handles == other.handles;
        }
    };

    // Each event once, in order, with the member that the host's call is of ("" for none). Fills in
    // arrows, mark and title.
    void follow(const Event& event, std::string_view member);

    // What the last event brought.
    std::vector<Arrow> arrows;
    std::string mark;   // something to be seen from afar; empty: nothing
    std::string title;  // what a listener's call is told of: "TrackComplete"; empty: nothing known

    const Levels& levels() const { return now; }

private:
    // What may call listeners: its name as a key, in the order of `number`.
    struct Cause {
        std::string name;
        std::uint64_t number;
        Place place;
    };
    // A function of the page that has been told to the plug-in, for an event or as the end of a
    // query.
    struct Interest {
        std::string key;
        std::string name;
        std::uint64_t after;  // causes up to this one have been told
    };
    struct Delivery {
        std::uint64_t begin;  // byte of the stream
        Place place;
    };

    // `key` is what causes are compared by, `name` what the trace calls it. Again for the same key
    // changes nothing.
    void listen(const void* function, const std::string& key, std::string_view name);
    void remember(std::string key, const Place& place);
    void followScript(const Event& event, std::string_view member);
    void followListener(const Event& event, const Place& place);
    void followLibrary(const Event& event, const Place& place);
    // Counts the frames that the plug-in took, in bytes of the format given with them.
    void deliver(const Event& event, const Place& place);
    void followSound(const Event& event, const Place& place);
    // A create or add_ref is one more, a release one less, by the functions' names.
    void countHandles(const Event& event);

    // The latest, oldest first.
    std::deque<Cause> causes;
    std::uint64_t lastCause = 0;
    std::unordered_map<const void*, std::vector<Interest>> interests;
    // Functions among the arguments of the call that script is in: a query made there ends with
    // one of them.
    std::vector<const void*> offered;

    Levels now;
    // Sound of the track that is loaded, from its first byte.
    int bytesPerFrame = 4;
    std::uint64_t delivered = 0;
    std::uint64_t written = 0;
    std::deque<Delivery> deliveries;
    std::unordered_map<const void*, Place> requests;
};

#endif
