#ifndef SONOLET_LAYER_VALIDATE_VALIDATOR_H
#define SONOLET_LAYER_VALIDATE_VALIDATOR_H

#include "tap/Call.h"
#include "validate/BackendRules.h"
#include "validate/Clock.h"
#include "validate/Findings.h"
#include "validate/HostRules.h"
#include "validate/LibraryRules.h"

#include "jsplugin.h"

#include <mutex>
#include <string>
#include <thread>

// Checks each call, as it happens, against what the headers of platform/ ask of both sides.
//
// Threads: any. Calls are passed on whether they break a rule or not.
class Validator final : public Watcher {
public:
    Validator(const Clock& clock, Findings::Tell tell);

    // What the host has given to the plug-in.
    void check(const jsplugin_callbacks* table) noexcept;

    void began(Call& call) noexcept override;
    void ended(Call& call, const Value* results, unsigned count) noexcept override;

    std::size_t count() const;
    std::string summary() const;

private:
    void checkTexts(const Call& call, const Value* values, unsigned count, Party blame);
    void checkThread(const Call& call);

    mutable std::mutex mutex;
    Findings findings;
    std::thread::id script;  // the thread of the host's first call
    HostRules host;
    LibraryRules library;
    BackendRules backend;
};

#endif
