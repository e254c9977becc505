#ifndef SONOLET_LAYER_CALLS_EVENT_H
#define SONOLET_LAYER_CALLS_EVENT_H

#include "calls/Record.h"

#include <string_view>
#include <vector>

// A record taken apart. What its values point to is in the buffer.
//
// Ownership: the values are the event's own, their texts, bytes and arrays lie in the buffer that
// was read; an event is used while that stays as it is. Threads: one.
struct Event {
    Record head;
    std::vector<Value> arguments;
    std::vector<Value> results;

    // Reads the one at `from` and answers where the next one begins. REQUIRES: a whole record, at a
    // multiple of 8 bytes.
    const char* read(const char* from);

    bool is(Fn function) const { return head.function == function; }
    // A call in two records has its arguments in the first and its results in the second. A mark
    // (function Fn::count) has one text as argument and is neither.
    bool hasArguments() const { return head.phase == Phase::Whole || head.phase == Phase::Begin; }
    bool hasResults() const { return head.phase == Phase::Whole || head.phase == Phase::End; }

    // Null, 0 or the empty text when there is no such value, or one of another kind.
    const void* pointer(std::size_t argument) const;
    std::int64_t integer(std::size_t argument) const;
    std::string_view text(std::size_t argument) const;
    // Likewise; result 0 is what the function answers, 1 what it has written.
    const void* resultPointer(std::size_t result) const;
    std::int64_t resultInteger(std::size_t result) const;
};

// As much of a text as the record has. Empty for what is no text. REQUIRES: a value of a record.
std::string_view storedText(const Value& value);

#endif
