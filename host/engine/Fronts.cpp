#include "engine/Fronts.h"

#include "engine/EngineHooks.h"
#include "engine/ObjectAccess.h"
#include "engine/Text.h"

#include <algorithm>
#include <memory_resource>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

extern const char frontsScript[];  // fronts.js

namespace {

// What hangs on a script object outside of the engine's heap, about: without knowing of it the
// engine would let many thousand dead objects lie before it collects.
constexpr std::size_t costOfObject = 4096;
constexpr std::size_t costOfFunction = 2048;
// A report takes as long as a small object.
constexpr std::size_t reportAt = std::size_t{16} * 1024;

// Records by the address of their front. Another object may come to lie there, so an entry counts
// only while the front lives.
class Table final {
public:
    void add(JSObjectRef object, ObjectRecord& record) {
        if (JSObjectSetOwner != nullptr) {
            JSObjectSetOwner(object, &record);
            return;
        }
        records.insert_or_assign(object, &record);
        lately(object) = {object, &record};
    }
    void remove(JSObjectRef object, const ObjectRecord& record) noexcept {
        if (JSObjectSetOwner != nullptr) {
            if (object != nullptr && JSObjectGetOwner(object) == &record) {
                JSObjectSetOwner(object, nullptr);
            }
            return;
        }
        const auto found = records.find(object);
        if (found != records.end() && found->second == &record) {
            records.erase(found);
            if (lately(object).first == object) {
                lately(object) = {};
            }
        }
    }
    // What was added for that address last; the front may have died.
    ObjectRecord* find(JSObjectRef object) noexcept {
        if (JSObjectGetOwner != nullptr) {
            return static_cast<ObjectRecord*>(JSObjectGetOwner(object));
        }
        Entry& known = lately(object);
        if (known.first != object) {
            const auto found = records.find(object);
            if (found == records.end()) {
                return nullptr;
            }
            known = *found;
        }
        return known.second;
    }

private:
    using Entry = std::pair<JSObjectRef, ObjectRecord*>;
    Entry& lately(JSObjectRef object) noexcept {
        return cache[reinterpret_cast<std::uintptr_t>(object) / 16 % cache.size()];
    }

    std::pmr::unsynchronized_pool_resource memory;
    std::pmr::unordered_map<JSObjectRef, ObjectRecord*> records{&memory};
    std::array<Entry, 64> cache = {};  // by a part of the address; all are in `records`
};

// Never freed: documents go up to process exit.
Table& table() {
    static Table& fronts = *new Table;
    return fronts;
}

// Those of the living documents: as many as there are frames.
std::vector<Fronts*>& living() {
    static std::vector<Fronts*>& all = *new std::vector<Fronts*>;
    return all;
}

// Of each function that is made here, with or without a Proxy before it.
JSValueRef callFunction(JSContextRef context,
                        JSObjectRef function,
                        JSObjectRef thisObject,
                        size_t argc,
                        const JSValueRef argv[],
                        JSValueRef* exception) noexcept {
    ObjectRecord* const record = table().find(function);
    if (record == nullptr) {
        return JSValueMakeUndefined(context);
    }
    return record->access.call(*record, thisObject, argc, argv, exception);
}

// Null when it throws: a function of fronts.js does where the stack ends, or the memory.
JSObjectRef
call(JSContextRef context, JSObjectRef function, std::initializer_list<JSValueRef> arguments = {}) {
    const JSValueRef result = JSObjectCallAsFunction(context, function, nullptr, arguments.size(),
                                                     arguments.begin(), nullptr);
    return result != nullptr && JSValueIsObject(context, result)
               ? JSValueToObject(context, result, nullptr)
               : nullptr;
}

// REQUIRES: the member is an object.
JSObjectRef member(JSContextRef context, JSObjectRef object, const char* name) {
    return JSValueToObject(
        context, JSObjectGetProperty(context, object, text::EngineString(name).get(), nullptr),
        nullptr);
}

}  // namespace

template <Fronts::Native native>
JSObjectCallAsFunctionCallback Fronts::callbackOf() noexcept {
    return [](JSContextRef from, JSObjectRef, JSObjectRef, size_t, const JSValueRef argv[],
              JSValueRef* exception) noexcept -> JSValueRef {
        for (Fronts* const fronts : living()) {
            if (fronts->context == from) {
                return (fronts->*native)(argv, exception);
            }
        }
        return nullptr;
    };
}

Fronts::Fronts(JSGlobalContextRef scriptContext) : context(scriptContext), numbered(1) {
    JSValueRef exception = nullptr;
    const JSValueRef evaluated = JSEvaluateScript(context, text::EngineString(frontsScript).get(),
                                                  nullptr, nullptr, 1, &exception);
    if (exception != nullptr) {
        throw std::runtime_error("fronts.js: " + text::toUtf8(context, exception));
    }
    const JSObjectRef natives = JSObjectMake(context, nullptr, nullptr);
    const auto offer = [&](const char* name, JSObjectCallAsFunctionCallback function) {
        const text::EngineString key(name);
        JSObjectSetProperty(context, natives, key.get(),
                            JSObjectMakeFunctionWithCallback(context, key.get(), function), 0,
                            nullptr);
    };
    offer("read", callbackOf<&Fronts::readNative>());
    offer("write", callbackOf<&Fronts::writeNative>());
    offer("name", callbackOf<&Fronts::nameNative>());
    offer("take", callbackOf<&Fronts::takeNative>());
    offer("part", callbackOf<&Fronts::partNative>());
    kernel = call(context, JSValueToObject(context, evaluated, nullptr), {natives});
    if (kernel == nullptr) {
        throw std::runtime_error("the script engine lacks what fronts.js needs");
    }
    JSValueProtect(context, kernel);
    makeBatch = member(context, kernel, "makeBatch");
    dropBatch = member(context, kernel, "dropBatch");
    makeFunctionFront = member(context, kernel, "makeFunctionFront");
    defineGlobal = member(context, kernel, "defineGlobal");
    keepFor = member(context, kernel, "hold");
    shared = static_cast<Shared*>(
        JSObjectGetArrayBufferBytesPtr(context, member(context, kernel, "shared"), nullptr));
    if (JSObjectFrontsBy != nullptr) {
        JSObjectFrontsBy(context, member(context, kernel, "makeObjectFront"));
    }
    living().push_back(this);
}

Fronts::~Fronts() {
    living().erase(std::find(living().begin(), living().end(), this));
    JSValueUnprotect(context, kernel);
}

// ---- Calls of fronts.js ----

JSValueRef Fronts::readNative(const JSValueRef[], JSValueRef* exception) {
    ObjectRecord* const record = recordNumbered(shared->record);
    const bool isQuiet = shared->quiet != 0;
    Reading reading;
    if (record != nullptr && record->callbacks.getter != nullptr) {
        // A copy: a call inside this one may give the number to another name.
        const std::string name = names[static_cast<std::size_t>(shared->name)];
        reading = record->access.read(*record, name, exception);
        if (isQuiet && *exception != nullptr) {
            *exception = nullptr;
            reading.answer = 0;
        }
    }
    shared->number = reading.number;
    shared->answer = reading.answer;
    return reading.value;
}

JSValueRef Fronts::writeNative(const JSValueRef argv[], JSValueRef* exception) {
    ObjectRecord* const record = recordNumbered(shared->record);
    bool isTaken = false;
    if (record != nullptr && record->callbacks.setter != nullptr) {
        const std::string name = names[static_cast<std::size_t>(shared->name)];
        isTaken = record->access.write(*record, name, argv[0], exception);
    }
    shared->answer = isTaken ? Reading::isFound : 0;
    return nullptr;
}

JSValueRef Fronts::nameNative(const JSValueRef argv[], JSValueRef*) {
    const auto number = static_cast<std::size_t>(JSValueToNumber(context, argv[0], nullptr));
    if (number >= names.size()) {
        names.resize(number + 1);
    }
    names[number] = text::toUtf8(context, argv[1]);
    return nullptr;
}

JSValueRef Fronts::takeNative(const JSValueRef argv[], JSValueRef*) {
    std::transform(argv, argv + batchSize, batch.begin(),
                   [](JSValueRef front) { return const_cast<JSObjectRef>(front); });
    return nullptr;
}

JSValueRef Fronts::partNative(const JSValueRef argv[], JSValueRef*) {
    if (ObjectRecord* const function = recordOf(const_cast<JSObjectRef>(argv[0]))) {
        function->access.drop(*function);
    }
    return nullptr;
}

// ---- Making ----

std::int32_t Fronts::newNumber(ObjectRecord* record) {
    if (freeNumbers.empty()) {
        numbered.push_back(record);
        return static_cast<std::int32_t>(numbered.size() - 1);
    }
    const std::int32_t number = freeNumbers.back();
    freeNumbers.pop_back();
    numbered[static_cast<std::size_t>(number)] = record;
    return number;
}

JSObjectRef Fronts::makeObject(ObjectRecord& record) {
    if (JSObjectMakeFront != nullptr) {
        record.number = newNumber(&record);
        return JSObjectMakeFront(context, record.number);
    }
    if (used == batchSize) {
        for (std::int32_t& each : batchNumbers) {
            each = newNumber();
        }
        shared->batch = batchNumbers;
        used = 0;
        batch[0] = nullptr;
        call(context, makeBatch);
        if (batch[0] == nullptr) {
            dropUnused();
            return nullptr;
        }
    }
    record.number = batchNumbers[used];
    numbered[static_cast<std::size_t>(record.number)] = &record;
    return batch[used++];
}

JSObjectRef Fronts::makeFunction(ObjectRecord& record) {
    // First: the engine may collect, and nothing would hold the function.
    reportMemory(costOfFunction);
    record.object = JSObjectMakeFunctionWithCallback(context, record.name, callFunction);
    table().add(record.object, record);
    return record.object;
}

JSObjectRef Fronts::make(ObjectRecord& record) {
    const NativeCallbacks& callbacks = record.callbacks;
    if (callbacks.call == nullptr) {
        record.object = makeObject(record);
        reportMemory(costOfObject);
    } else {
        makeFunction(record);
        if (callbacks.getter != nullptr || callbacks.setter != nullptr) {
            callables[&record] = record.object;
            record.number = newNumber(&record);
            shared->batch[0] = record.number;
            record.object = call(context, makeFunctionFront, {record.object});
        }
    }
    if (record.object == nullptr) {
        forget(record);
        return nullptr;
    }
    if (record.number != 0) {
        table().add(record.object, record);
    }
    // Until it is returned the front lives by being on the stack.
    record.weak.set(context, record.object);
    return record.object;
}

void Fronts::forget(ObjectRecord& record) noexcept {
    table().remove(record.object, record);
    if (const auto callable = callables.extract(&record)) {
        table().remove(callable.mapped(), record);
    }
    forgetNumber(record);
    record.weak.reset();
    record.object = nullptr;
}

// ---- The global object, and what objects keep ----

void Fronts::defineGlobals(ObjectRecord& global, char** globalNames) {
    global.number = newNumber(&global);
    for (char** name = globalNames; name != nullptr && *name != nullptr; ++name) {
        call(context, defineGlobal,
             {JSValueMakeNumber(context, global.number),
              JSValueMakeString(context, text::shared(*name))});
    }
}

void Fronts::forgetNumber(ObjectRecord& record) noexcept {
    if (record.number != 0) {
        numbered[static_cast<std::size_t>(record.number)] = nullptr;
        freeNumbers.push_back(std::exchange(record.number, 0));
    }
}

void Fronts::hold(JSObjectRef holder, const std::vector<JSValueRef>& held) const {
    call(context, keepFor, {holder, JSObjectMakeArray(context, held.size(), held.data(), nullptr)});
}

ObjectRecord* Fronts::recordOf(JSObjectRef object) noexcept {
    ObjectRecord* const record = table().find(object);
    return record != nullptr && record->living() == object ? record : nullptr;
}

void Fronts::dropUnused() {
    if (used == batchSize) {
        return;
    }
    freeNumbers.insert(freeNumbers.end(), batchNumbers.begin() + used, batchNumbers.end());
    used = batchSize;
    call(context, dropBatch);
}

void Fronts::reportMemory(std::size_t bytes) {
    unreported += bytes;
    if (unreported >= reportAt) {
        JSReportExtraMemoryCost(context, std::exchange(unreported, 0));
    }
}
