#ifndef SONOLET_LAYER_VALIDATE_HOSTRULES_H
#define SONOLET_LAYER_VALIDATE_HOSTRULES_H

#include "validate/Clock.h"
#include "validate/Findings.h"

#include <cstdint>
#include <unordered_map>

// What jsplugin.h asks of host and plug-in: the rules 104 to 116; the others of the hundred are the
// validator's.
//
// Threads: one at a time. Units: nanoseconds of the clock. Ownership: findings and clock are its
// owner's and outlive it; objects are known by their address and never looked into. Errors: none to
// the caller, findings of either side.
class HostRules final {
public:
    HostRules(Findings& allFindings, const Clock& itsClock)
        : findings(allFindings), clock(itsClock) {}

    // Before the other side gets the call, and after it came back; calls of jsplugin.h alone.
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
        // When it ended: the thread's time so far, and the calls from script.
        std::uint64_t busyAt = 0;
        std::uint64_t callsAt = 0;
    };
    struct Document {
        bool isOpen = false;
        bool isUnloaded = false;
        std::unordered_map<const void*, bool> unloads;  // listeners; true: has been called
        std::unordered_map<const void*, Poll> polls;
    };

    // The object among the arguments may not have been destroyed. Objects of the page are never
    // known here.
    void use(const Call& call, unsigned argument, Party blame);
    void checkMaking(const Call& call);
    // `count` is the index of the argument that has their number.
    void checkArguments(const Call& call, unsigned count, Party blame);
    // The type, and that there is what it needs.
    void checkValue(const Call& call, const Value& value, Party blame);
    void checkAnswer(const Call& call, const Value* results, unsigned count);
    void beganDestructor(const Call& call);
    void beganPoll(const Call& call);
    // `goesOn`: it answered that it is to be called again.
    void endedPoll(const Call& call, bool goesOn);
    void beganUnload(const Call& call);
    // The one that it was made in; for an object not known the object itself, which is a document
    // then.
    const void* documentOf(const void* object) const;

    Findings& findings;
    const Clock& clock;
    std::unordered_map<const void*, Object> objects;
    std::unordered_map<const void*, Document> documents;
    std::uint64_t callsFromScript = 0;
};

#endif
