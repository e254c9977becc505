#ifndef SONOLET_LAYER_RECORD_EVENT_H
#define SONOLET_LAYER_RECORD_EVENT_H

#include "record/Record.h"

#include <string_view>
#include <vector>

// A record taken apart. What its values point to is in the buffer.
struct Event {
    Record head;
    std::vector<Value> arguments;
    std::vector<Value> results;

    // Reads the one at `from` and answers where the next one begins.
    const char* read(const char* from);

    bool is(Fn function) const { return head.function == function; }
    bool hasArguments() const { return head.phase == Phase::Whole || head.phase == Phase::Begin; }
    bool hasResults() const { return head.phase == Phase::Whole || head.phase == Phase::End; }

    // Null, 0 or the empty text when there is no such value, or one of another kind.
    const void* pointer(std::size_t argument) const;
    std::int64_t integer(std::size_t argument) const;
    std::string_view text(std::size_t argument) const;
    const void* resultPointer(std::size_t result) const;
    std::int64_t resultInteger(std::size_t result) const;
};

// As much of a text as the record has.
std::string_view storedText(const Value& value);

#endif
