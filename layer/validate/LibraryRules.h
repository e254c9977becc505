#ifndef SONOLET_LAYER_VALIDATE_LIBRARYRULES_H
#define SONOLET_LAYER_VALIDATE_LIBRARYRULES_H

#include "validate/Clock.h"
#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>
#include <unordered_set>

// What libspotify/api.h asks of plug-in and library.
class LibraryRules final {
public:
    LibraryRules(Findings& allFindings, const Clock& itsClock)
        : findings(allFindings), clock(itsClock) {}

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
    struct Query {
        const void* handle = nullptr;
        std::uint64_t askedAt = 0;
        bool isAnswered = false;
    };
    struct Registration {
        bool isTakenAway = false;
    };

    bool isValid(const void* handle, int depth = 0) const;
    void checkHandle(const Call& call, const Value& value);
    void take(const Call& call, const Value& result);
    void lend(const void* handle, HandleKind kind, const void* lender);
    void lendArguments(const Call& call);
    void give(const Call& call);
    void beganCallback(const Call& call);
    void beganDelivery(const Call& call);
    void endedFunction(const Call& call, const Value* results, unsigned count);
    void checkQueries(const Call& call);
    void checkResults(const Call& call, const Value* results, unsigned count);
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
    bool mayDeliver = false;
    int deliveriesUnderWay = 0;
};

#endif
