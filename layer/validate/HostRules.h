#ifndef SONOLET_LAYER_VALIDATE_HOSTRULES_H
#define SONOLET_LAYER_VALIDATE_HOSTRULES_H

#include "validate/Clock.h"
#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>

// What jsplugin.h asks of host and plug-in.
class HostRules final {
public:
    HostRules(Findings& allFindings, const Clock& itsClock)
        : findings(allFindings), clock(itsClock) {}

    void began(const Call& call);
    void ended(const Call& call, const Value* results, unsigned count);

private:
    // One that the plug-in made. What has been destroyed stays known until its address is used
    // again.
    struct Object {
        const void* document = nullptr;
        bool isDestroyed = false;
    };
    struct Poll {
        std::uint64_t interval = 0;  // ns
        bool isRunning = false;
        bool hasEnded = false;
        std::uint64_t endedAt = 0;  // 0: it has not run yet
        std::uint64_t busyAt = 0;
        std::uint64_t callsAt = 0;
    };
    struct Document {
        bool isOpen = false;
        bool isUnloaded = false;
        std::unordered_map<const void*, bool> unloads;  // listeners; true: has been called
        std::unordered_map<const void*, Poll> polls;
    };

    void use(const Call& call, unsigned argument, Party blame);
    void checkMaking(const Call& call);
    void checkArguments(const Call& call, unsigned count, Party blame);
    void checkValue(const Call& call, const Value& value, Party blame);
    void checkAnswer(const Call& call, const Value* results, unsigned count);
    void beganDestructor(const Call& call);
    void beganPoll(const Call& call);
    void endedPoll(const Call& call, bool goesOn);
    void beganUnload(const Call& call);
    const void* documentOf(const void* object) const;

    Findings& findings;
    const Clock& clock;
    std::unordered_map<const void*, Object> objects;
    std::unordered_map<const void*, Document> documents;
    std::uint64_t callsFromScript = 0;
};

#endif
