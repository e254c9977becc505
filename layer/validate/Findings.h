#ifndef SONOLET_LAYER_VALIDATE_FINDINGS_H
#define SONOLET_LAYER_VALIDATE_FINDINGS_H

#include "tap/Call.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>

// The findings, and what was called on each object before.
//
// A finding is one line: "rule 204, plug-in: a handle is given back ...: track 55d0 in
// sp_track_release, thread 741; before it: sp_track_name, sp_track_release". Of each rule and
// whoever breaks it the first ten are told, the others counted. Threads: one at a time. Lines have
// names and addresses, no text of a page or account but names of properties. The histories of more
// than 50000 objects are forgotten together. Errors: none but std::bad_alloc.
class Findings final {
public:
    // Gets each line, without an end. On the thread of the call, with the validator's lock held: it
    // may not call the plug-in.
    using Tell = std::function<void(const std::string&)>;
    explicit Findings(Tell tellLine);

    // The call belongs to the history of all objects among its arguments.
    // Of the first three: no object that a rule speaks of stands further behind.
    void remember(const Call& call);

    // Nothing is called on it any more; what comes to its address is another.
    void forget(const void* object);

    // `call` may be null: nothing that was called just now.
    void add(int rule,
             Party blame,
             const Call* call,
             const Value& object,
             const std::string& detail = {});

    // All, with those that were not told one by one.
    std::size_t count() const { return total; }

    // "3 findings: rule 204 plug-in 2, rule 105 host 1".
    std::string summary() const;

private:
    // The last eight calls, as numbers of labels, in a ring.
    struct History {
        std::array<std::uint32_t, 8> labels;
        std::uint32_t count = 0;
    };

    std::uint32_t labelOf(const Call& call);
    std::string before(const void* object, const Call* call) const;

    const Tell tell;
    std::size_t total = 0;
    std::map<std::pair<int, Party>, std::size_t> counts;
    std::unordered_map<const void*, History> histories;
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::unordered_map<std::uint32_t, std::string> labels;
};

// As findings name it: "host", "plug-in", "library", "backend", "log". Never freed.
const char* nameOf(Party party);

#endif
