#ifndef SONOLET_LAYER_VALIDATE_BACKENDRULES_H
#define SONOLET_LAYER_VALIDATE_BACKENDRULES_H

#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>

// What uva.h asks of plug-in and backend: the rules 302 to 310; 301, about threads, is the
// validator's.
//
// Threads: one at a time. Units: bytes; requests are counted from 1. Ownership: the findings are
// the validator's and outlive it. Backends are told apart by the client that the layer has put
// before the plug-in's; some that were released stay known, so that a late call is seen.
class BackendRules final {
public:
    explicit BackendRules(Findings& allFindings) : findings(allFindings) {}

    // Both get calls of uva.h alone. `results` is one value where the function answers something.
    void began(const Call& call);
    void ended(const Call& call, const Value* results);

private:
    // By its place among the requests of its backend, from 1.
    struct Request {
        std::uint64_t number = 0;
        std::int64_t size = 0;  // bytes
    };
    // From requestBackend on.
    struct Backend {
        bool isReleased = false;
        bool hasEnded = false;
        std::uint64_t lastRequest = 0;
        std::uint64_t lastAnswered = 0;
        std::unordered_map<const void*, Request> waiting;
    };

    void beganEvent(const Call& call);
    void beganWrite(const Call& call, Backend& backend);
    void beganRelease(const Call& call, Backend& backend);

    Findings& findings;
    std::unordered_map<const void*, Backend> backends;
};

#endif
