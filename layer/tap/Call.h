#ifndef SONOLET_LAYER_TAP_CALL_H
#define SONOLET_LAYER_TAP_CALL_H

#include "tap/Functions.h"
#include "tap/Value.h"

#include <atomic>
#include <cstdint>

class Call;

// Who wants to know of calls: from when the layer is made until its exit handler.
//
// Threads: any, several at once. Ownership: call, values and what they point to are the caller's
// and gone when began() or ended() returns; what is to be kept is copied. The layer never frees a
// watcher: a thread may be in it to the end of the process.
class Watcher {
public:
    virtual ~Watcher() = default;
    // On the calling thread, before the call reaches the other side and after it came back. Neither
    // may call anybody outside the layer, nor throw.
    virtual void began(Call& call) noexcept = 0;
    virtual void ended(Call& call, const Value* results, unsigned count) noexcept = 0;
};

// One call across the border: lives on the stack of its thread for as long as the call lasts.
//
// REQUIRES: the values stay where they are, end() comes before the destructor, and calls of a
// thread end in the opposite order of their beginning. Errors: none. With no watcher a call costs
// the looks for them and a link in the chain of its thread.
class Call final {
public:
    Call(Fn itsFunction, const Value* itsArguments, unsigned itsCount) noexcept
        : function(itsFunction), count(itsCount), arguments(itsArguments), outer(innermost) {
        innermost = this;
        for (const auto& each : watchers) {
            if (Watcher* const watcher = each.load(std::memory_order_acquire)) {
                watcher->began(*this);
            }
        }
    }
    ~Call() { innermost = outer; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    // Once, when the call has come back. Result 0 is what the function answers, 1 what it has
    // written for its caller.
    void end(const Value* results, unsigned resultCount) noexcept {
        for (const auto& each : watchers) {
            if (Watcher* const watcher = each.load(std::memory_order_acquire)) {
                watcher->ended(*this, results, resultCount);
            }
        }
    }
    void end(const Value& result) noexcept { end(&result, 1); }
    void end() noexcept { end(nullptr, 0); }

    // Whether a call of this function, on the same thread, waits for this one.
    bool isInside(Fn which) const noexcept {
        for (const Call* around = outer; around != nullptr; around = around->outer) {
            if (around->function == which) {
                return true;
            }
        }
        return false;
    }

    const Fn function;
    const unsigned count;
    const Value* const arguments;
    Call* const outer;  // the same thread's; null: there is none

    // The recorder's: when the call began, and whether its beginning has been written down.
    std::uint64_t beganAt = 0;
    bool isWritten = false;

    // First the one that checks, then the one that records what it found. Null: none. May change
    // while calls are under way: such a call is told to whoever is there at its beginning, and at
    // its end.
    static std::atomic<Watcher*> watchers[2];

private:
    static thread_local Call* innermost;
};

#endif
