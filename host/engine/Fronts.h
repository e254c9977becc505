#ifndef SONOLET_HOST_ENGINE_FRONTS_H
#define SONOLET_HOST_ENGINE_FRONTS_H

#include "engine/ObjectRecord.h"

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// The script objects of native records ("fronts"), the plug-in's names on the global object, and
// how an access to either becomes a call of the plug-in.
//
// The front of an object is a Proxy whose traps are in fronts.js: what may be kept stays there, and
// every other read and write is one call back. The front of a function is a function of the
// engine's, with a Proxy before it when it has names of its own.
//
// Threads: the script thread. One table for the process tells whose a front is: frames hand
// objects to each other. Errors: the constructor throws std::runtime_error when the engine lacks
// what fronts.js needs.
class Fronts final {
public:
    explicit Fronts(JSGlobalContextRef scriptContext);
    ~Fronts();

    Fronts(const Fronts&) = delete;
    Fronts& operator=(const Fronts&) = delete;

    // A new front, which is the record's from here on. Null when the engine has no stack or memory
    // left for it.
    JSObjectRef make(ObjectRecord& record);

    // The same for a function that lives as long as the front that keeps it.
    JSObjectRef makeFunction(ObjectRecord& record);

    // Makes names of the global object accesses to its record, until forgetNumber().
    void defineGlobals(ObjectRecord& global, char** names);
    void forgetNumber(ObjectRecord& record) noexcept;

    // The object keeps those, which are protected, alive from now on, and nothing that it kept
    // before.
    void hold(JSObjectRef holder, const std::vector<JSValueRef>& held) const;

    // The record is no longer its object's.
    void forget(ObjectRecord& record) noexcept;

    // The record behind a front that lives; null for any other object, or when the record is gone.
    static ObjectRecord* recordOf(JSObjectRef object) noexcept;

    // Fronts are made ahead, and would live until they are used.
    void dropUnused();

private:
    static constexpr std::size_t batchSize = 32;

    // Where a call between the two halves has its numbers; fronts.js knows the layout.
    struct Shared {
        double number;
        std::int32_t record;
        std::int32_t name;
        std::int32_t quiet;
        std::int32_t answer;
        std::array<std::int32_t, batchSize> batch;
    };

    // What fronts.js calls.
    using Native = JSValueRef (Fronts::*)(const JSValueRef argv[], JSValueRef* exception);
    template <Native native>
    static JSObjectCallAsFunctionCallback callbackOf() noexcept;
    JSValueRef readNative(const JSValueRef argv[], JSValueRef* exception);
    JSValueRef writeNative(const JSValueRef argv[], JSValueRef* exception);
    JSValueRef nameNative(const JSValueRef argv[], JSValueRef* exception);
    JSValueRef takeNative(const JSValueRef argv[], JSValueRef* exception);
    JSValueRef partNative(const JSValueRef argv[], JSValueRef* exception);

    // The number by which fronts.js knows the record of a front; 0 is nobody's.
    std::int32_t newNumber(ObjectRecord* record = nullptr);
    ObjectRecord* recordNumbered(std::int32_t number) const noexcept {
        return numbered[static_cast<std::size_t>(number)];
    }
    JSObjectRef makeObject(ObjectRecord& record);  // null as make() does
    void reportMemory(std::size_t bytes);

    JSGlobalContextRef context;
    JSObjectRef kernel;  // protected; keeps all the others alive
    JSObjectRef makeBatch;
    JSObjectRef dropBatch;
    JSObjectRef makeFunctionFront;
    JSObjectRef defineGlobal;
    JSObjectRef keepFor;
    Shared* shared;  // the engine's

    std::vector<std::string> names;
    std::vector<ObjectRecord*> numbered;  // null: nobody's
    std::vector<std::int32_t> freeNumbers;
    // What the Proxy of a function with names stands before.
    std::unordered_map<const ObjectRecord*, JSObjectRef> callables;
    // Made ahead: each has its number, and lives by fronts.js until the next ones are made.
    std::array<JSObjectRef, batchSize> batch = {};
    std::array<std::int32_t, batchSize> batchNumbers = {};
    std::size_t used = batchSize;
    std::size_t unreported = 0;  // bytes
};

#endif
