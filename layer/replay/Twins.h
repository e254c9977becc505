#ifndef SONOLET_LAYER_REPLAY_TWINS_H
#define SONOLET_LAYER_REPLAY_TWINS_H

#include "tap/Value.h"

#include "jsplugin.h"

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <unordered_set>

// What the recording has, and what stands for it in this process.
//
// Handles of the library are their recorded addresses: nobody looks behind them. Script objects and
// the backend's requests are looked into, so each has a twin here. Functions and clients of the
// plug-in are found where the plug-in hands them out: the first time decides. For a secret stands a
// text of its length that is another for each number.
//
// Threads: whoever makes a step of the recording (Turns). Ownership: twins of objects and all texts
// live to the end of the process. Errors: NotReplayable for what does not have the form that the
// layer writes.
class Twins final {
public:
    using Address = std::uintptr_t;

    // As the plug-in's host keeps it.
    struct Object {
        jsplugin_obj own{nullptr};  // the first member: the plug-in's view
        jsplugin_getter* getter = nullptr;
        jsplugin_setter* setter = nullptr;
        jsplugin_function* call = nullptr;
        jsplugin_destructor* destructor = nullptr;
        jsplugin_gc_trace* trace = nullptr;
    };

    // ---- From the recording ----

    // Of {"kind": "address"}.
    static Address address(const nlohmann::json& value);
    // The number of values, `value`, when so many are there.
    static int count(const nlohmann::json& value, std::size_t there);
    // Made when it is new. Null for a null object.
    Object* object(const nlohmann::json& value);
    // Anew: what was there at this address is gone.
    Object& makeObject(const nlohmann::json& value);
    // Null for null.
    const char* text(const nlohmann::json& value);
    // What {"hex": ...} has; empty for null.
    const std::string& bytes(const nlohmann::json& value);
    jsplugin_value slot(const nlohmann::json& value);
    const char* keep(std::string text) { return kept.insert(std::move(text)).first->c_str(); }

    // ---- From this process ----

    // From now on these two are the same, whatever they were before.
    void pair(Address recorded, const void* here);
    // The value in the words of the recording. `expected` decides what a pointer is that has never
    // been seen.
    nlohmann::json told(const Value& value, const nlohmann::json& expected);

private:
    std::string standIn(std::int64_t number, std::size_t bytes);

    std::unordered_map<Address, std::unique_ptr<Object>> objects;
    std::unordered_map<Address, const void*> pairs;
    std::unordered_map<const void*, Address> backwards;
    std::unordered_set<std::string> kept;
    std::unordered_map<std::string, std::int64_t> secrets;  // numbers by what stands for them
};

#endif
