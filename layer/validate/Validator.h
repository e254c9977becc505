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
// Threads: any. Calls are passed on whether they break a rule or not. One lock is held while a call
// is checked, never while it runs. Calls of different threads are checked in the order in which
// they get the lock. Ownership: the clock is the caller's and outlives the validator. Errors: none
// to the caller; what cannot be allocated ends the process, since calls may not throw.
class Validator final : public Watcher {
public:
    // `tell` gets each finding as it is made, on the thread of the call and with the lock held.
    Validator(const Clock& clock, Findings::Tell tell);

    // What the host has given to the plug-in. Null is a finding, as each function that is missing.
    void check(const jsplugin_callbacks* table) noexcept;

    void began(Call& call) noexcept override;
    void ended(Call& call, const Value* results, unsigned count) noexcept override;

    // So far, with those that were counted and not told. Any thread.
    std::size_t count() const;
    std::string summary() const;

private:
    // All texts are UTF-8; `blame` is the side that they come from.
    void checkTexts(const Call& call, const Value* values, unsigned count, Party blame);
    // The thread of script, but for what may come from any.
    void checkThread(const Call& call);

    mutable std::mutex mutex;
    Findings findings;
    std::thread::id script;  // the thread of the host's first call
    HostRules host;
    LibraryRules library;
    BackendRules backend;
};

#endif
