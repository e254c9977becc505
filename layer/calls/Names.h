#ifndef SONOLET_LAYER_CALLS_NAMES_H
#define SONOLET_LAYER_CALLS_NAMES_H

#include "calls/Event.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// What page authors call the calls that pass, and which texts in them are secret.
//
// The interface has no names of objects, so they are those by which script came to them: the
// property that answered the object, or the function ("create" gives the name of what it was called
// on). A function is the property that it was read from.
//
// Secret are the passwords and blobs that the library gets and gives, what script hands to login
// behind the user's name, what it reads or sets under a name such as "proxyPassword", and what it
// hands to a function without a name. A secret of the library stays one wherever the same text
// passes later.
//
// Threads: one. Memory: a name for each living object of the plug-in. Errors: none; what is broken
// off has no name and is hidden rather than told.
class Names final {
public:
    // One that forgets knows the latest 256 secrets of the library again; else all.
    explicit Names(bool itForgets = true) : forgets(itForgets) {}

    // Each event once, in order. Answers its name: "get Track.name", "call Session.login", "poll",
    // "sp_track_name"; of a call's end the empty text. Texts that are secret become so in `event`.
    std::string follow(Event& event);

    // The name of a function object ("addEventListener"); empty for one of the page. Valid until
    // the next event.
    std::string_view memberOf(const void* functionObject) const;

    // A number for a secret text: the same for the same text, from 1 on, 0 for the empty one.
    // Whoever asks for numbers keeps all these texts.
    std::int64_t numberOf(std::string_view secret);

    // How many objects of the plug-in the browser has, functions included, and how many of them are
    // none: wrappers of the library's things, and the few that are there from the start.
    std::size_t living() const { return objects.size(); }
    std::size_t wrappers() const { return objects.size() - functions; }

private:
    struct Living {
        std::string name;
        bool isFunction = false;
    };
    // The calls of the host that a thread is in.
    struct Frame {
        Fn function;
        const void* object;
        const void* functionObject;
        std::string name;  // of the property
        const void* made;  // by create_function or create_object inside it
    };

    std::string of(const Event& event) const;
    // "object" for one that is not known.
    std::string_view nameOf(const void* object) const;
    void forget(const void* object);
    // The object that was made in this call has its name from now on.
    void nameResult(const Event& event, const Frame& frame);
    // Both make Tag::Secret of the tags of what is to be hidden.
    void hideArguments(Event& event);
    void hideResults(Event& event, const Frame& frame) const;
    // What the library got or gave as a secret.
    void learn(std::string secret);
    // Secret by where it stands.
    bool isHidden(const Event& event, std::size_t argument) const;
    // Compared as far as records have texts, and as a whole.
    bool isKnownSecret(const Value& value) const;

    std::unordered_map<const void*, Living> objects;
    std::size_t functions = 0;  // of the objects
    std::unordered_map<std::uint32_t, std::vector<Frame>> threads;
    const bool forgets;
    // Texts that were seen where the library gets or gives secrets: the last 256, oldest first.
    std::unordered_set<std::string> secrets;
    std::deque<std::string> secretsInOrder;
    std::unordered_map<std::string, std::int64_t> numbers;
    std::int64_t lastNumber = 0;
};

#endif
