#ifndef SONOLET_LAYER_VALIDATE_BACKENDRULES_H
#define SONOLET_LAYER_VALIDATE_BACKENDRULES_H

#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>

// What uva.h asks of plug-in and backend.
class BackendRules final {
public:
    explicit BackendRules(Findings& allFindings) : findings(allFindings) {}

    void began(const Call& call);
    void ended(const Call& call, const Value* results);

private:
    struct Request {
        std::uint64_t number = 0;
        std::int64_t size = 0;  // bytes
    };
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
