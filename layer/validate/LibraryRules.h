#ifndef SONOLET_LAYER_VALIDATE_LIBRARYRULES_H
#define SONOLET_LAYER_VALIDATE_LIBRARYRULES_H

#include "validate/Clock.h"
#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>
#include <unordered_set>

// What libspotify/api.h asks of plug-in and library: the rules 202 to 219; 201, and threads in 208,
// are the validator's.
//
// Threads: one at a time. Units: nanoseconds of the clock. Ownership: findings and clock are its
// owner's and outlive it; handles are compared and never looked into. The library may give the same
// address again: a handle's life tells one from the other.
class LibraryRules final {
public:
    LibraryRules(Findings& allFindings, const Clock& itsClock)
        : findings(allFindings), clock(itsClock) {}

    // Before the other side gets the call, and after it came back; calls of libspotify/api.h alone.
    void began(const Call& call);
    void ended(const Call& call, const Value* results, unsigned count);

private:
    // A handle is valid while the plug-in owns a reference, or while that is valid of which it was
    // borrowed last.
    struct Handle {
        HandleKind kind = HandleKind::Session;
        int owned = 0;
        const void* lender = nullptr;
        std::uint64_t life = 0;  // another at the same address has another
        std::uint64_t lendersLife = 0;
    };
    // By the number of its registration, from the question to the last release.
    struct Query {
        const void* handle = nullptr;
        std::uint64_t askedAt = 0;
        bool isAnswered = false;
    };
    // Of a playlist, a container or an image, by its number. They are never forgotten: a late
    // callback is to be seen.
    struct Registration {
        bool isTakenAway = false;
    };

    // By ownership, or through lenders: `depth` counts these, and a chain without end passes for
    // valid.
    bool isValid(const void* handle, int depth = 0) const;
    // An argument of the plug-in's: not null, given, of its kind, still valid.
    void checkHandle(const Call& call, const Value& value);
    // Functions with _create answer a reference, all others lend their handle.
    void take(const Call& call, const Value& result);
    void lend(const void* handle, HandleKind kind, const void* lender);
    void lendArguments(const Call& call);
    // A release. With the last reference goes a query that has been answered.
    void give(const Call& call);
    void beganCallback(const Call& call);
    void beganDelivery(const Call& call);
    void endedFunction(const Call& call, const Value* results, unsigned count);
    // Those that wait for a minute are told once.
    void checkQueries(const Call& call);
    void checkResults(const Call& call, const Value* results, unsigned count);
    // Finds what has not been given back, and forgets all handles.
    void endSession(const Call& call);

    Findings& findings;
    const Clock& clock;
    std::unordered_map<const void*, Handle> handles;
    std::uint64_t lastLife = 0;
    const void* session = nullptr;  // the living one
    bool hasSessionEnded = false;
    std::unordered_map<std::int64_t, Query> queries;
    std::unordered_map<std::int64_t, Registration> registrations;
    std::unordered_set<const void*> subscribers;  // given out and not yet given back
    // Since a play, until the next load, unload or release.
    bool mayDeliver = false;
    int deliveriesUnderWay = 0;
};

#endif
