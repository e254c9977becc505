#include "FakeHost.h"

#include "Faults.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>

FakeHost* FakeHost::instance = nullptr;

namespace {

[[noreturn]] void stop(const char* who, const char* what) {
    fprintf(stderr, "FakeHost: %s: %s\n", who, what);
    abort();
}

bool isObject(int type) {
    return type == JSP_TYPE_NATIVE_OBJECT || type == JSP_TYPE_OBJECT;
}

// Copies what a value slot holds; an answered string is good until the next call only.
Value copyOf(const jsplugin_value& slot) {
    Value value;
    value.type = slot.type;
    if (isObject(slot.type)) {
        value.object = slot.u.object;
    } else if (slot.type == JSP_TYPE_STRING || slot.type == JSP_TYPE_EXPRESSION) {
        value.string = slot.u.string;
    } else if (slot.type == JSP_TYPE_NUMBER) {
        value.number = slot.u.number;
    } else if (slot.type == JSP_TYPE_BOOLEAN) {
        value.number = slot.u.boolean;
    }
    return value;
}

template <typename Call>
int enterPlugin(const Call& call) {
    const InPlugin inside;
    return call();
}

// Borrows the strings of `value`.
jsplugin_value slotOf(const Value& value) {
    jsplugin_value slot{};
    slot.type = value.type;
    if (isObject(value.type)) {
        slot.u.object = value.object;
    } else if (value.type == JSP_TYPE_STRING) {
        slot.u.string = value.string.c_str();
    } else if (value.type == JSP_TYPE_BOOLEAN) {
        slot.u.boolean = value.number != 0 ? 1 : 0;
    } else {
        slot.u.number = value.number;
    }
    return slot;
}

}  // namespace

Value::Value(jsplugin_obj* value)
    : type(FakeHost::instance->at(value, "page value").kind < FakeHost::Kind::Document
               ? JSP_TYPE_NATIVE_OBJECT
               : JSP_TYPE_OBJECT),
      object(value) {}

bool Value::operator==(const Value& other) const {
    return std::tie(type, number, string, object) ==
           std::tie(other.type, other.number, other.string, other.object);
}

std::ostream& operator<<(std::ostream& out, const Value& value) {
    static const char* const names[] = {"undefined", "native",  "object", "string",
                                        "number",    "boolean", "null",   "expression"};
    return out << names[value.type] << " (" << value.number << ", \"" << value.string << "\", "
               << value.object << ')';
}

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
    return out << "code " << answer.code << ' ' << answer.value;
}

// ---- What the plug-in calls ----

FakeHost::Object& FakeHost::enter(const char* function, jsplugin_obj* object) {
    if (instance == nullptr) {
        stop(function, "called without a host");
    }
    instance->runHook();
    return instance->at(object, function);
}

void FakeHost::runHook() {
    // The hook may call the plug-in, which calls the host again.
    if (auto hook = std::exchange(duringCallbacks, nullptr)) {
        hook();
        duringCallbacks = std::move(hook);
    }
}

int FakeHost::create(bool refused, jsplugin_obj* context, Object model, jsplugin_obj** result) {
    refused = Faults::get().strikes(Faults::Host) || refused;
    const Outside outside;
    model.document = instance->at(context, "create").document;
    instance->runHook();  // which may destroy the context
    *result = refused ? nullptr : instance->make(std::move(model));
    return refused ? 0 : JSP_CREATE_OK;
}

jsplugin_callbacks FakeHost::makeTable() {
    jsplugin_callbacks table{};
    table.create_object = [](auto* ctx, auto* get, auto* set, auto* end, auto*, auto** result) {
        Object model(Kind::Native);
        model.getter = get;
        model.setter = set;
        model.destructor = end;
        return create(instance->refusesObjects, ctx, model, result);
    };
    table.create_function = [](auto* ctx, auto*, auto*, auto* call, auto* end, auto*, auto** made) {
        Object model(Kind::Native);
        model.call = call;
        model.destructor = end;
        return create(instance->refusesFunctions, ctx, model, made);
    };
    table.add_poll_function = [](auto* ctx, unsigned interval, auto* poll) {
        const bool refused = Faults::get().strikes(Faults::Host);
        const Outside outside;
        enter("add_poll_function", ctx);
        if (refused) {
            return 1;
        }
        instance->polls.push_back({ctx, interval, poll, instance->now + interval});
        instance->lifecycle.push_back("poll " + std::to_string(interval));
        return 0;
    };
    table.add_unload_listener = [](auto* ctx, auto* unload) {
        const bool refused = Faults::get().strikes(Faults::Host);
        const Outside outside;
        Object& document = enter("add_unload_listener", ctx);
        if (refused) {
            return 1;
        }
        document.unloadListeners.push_back(unload);
        instance->lifecycle.emplace_back("unload listener");
        return 0;
    };
    table.call_function = [](auto* ctx, auto* thisObject, auto* function, int count,
                             auto* arguments, void* reservedA, void* reservedB) {
        const bool refused = Faults::get().strikes(Faults::Host);
        const Outside outside;
        enter("call_function", ctx);
        if (reservedA != nullptr || reservedB != nullptr ||
            (count == 0) != (arguments == nullptr)) {
            stop("call_function", "arguments out of contract");
        }
        if (refused) {
            return 1;
        }
        Call call{ctx, thisObject, function, {}};
        for (int i = 0; i < count; ++i) {
            call.arguments.push_back(copyOf(arguments[i]));
            if (isObject(arguments[i].type)) {
                instance->at(arguments[i].u.object, "call_function: argument");
            }
        }
        const auto body = instance->at(function, "call_function: function").body;
        instance->calls.push_back(call);
        if (body) {
            body(call.arguments);
        }
        return 0;
    };
    table.gc_mark = [](auto* object) {
        const Outside outside;
        enter("gc_mark", object).marked = true;
        if (!instance->tracing) {
            stop("gc_mark", "called outside a trace");
        }
    };
    return table;
}

struct jsplugin_capabilities& FakeHost::load() {
    static jsplugin_callbacks table = makeTable();
    struct jsplugin_capabilities* record = nullptr;
    if (jsplugin_capabilities(&record, &table) != 0 || record == nullptr) {
        stop("jsplugin_capabilities", "did not answer 0 with a record");
    }
    return *record;
}

// ---- Documents and objects ----

FakeHost::FakeHost()
    : plugin([]() -> auto& {
          static auto& loaded = load();
          return loaded;
      }()) {
    if (std::exchange(instance, this) != nullptr) {
        stop("FakeHost", "one at a time");
    }
}

FakeHost::~FakeHost() {
    duringCallbacks = nullptr;
    for (const auto& entry : objects) {
        if (entry.second->kind == Kind::Document) {
            unload(entry.second.get());
        }
    }
    collectIf([](const Object& object) { return object.kind != Kind::Document; });
    instance = nullptr;
}

FakeHost::Object& FakeHost::at(const jsplugin_obj* object, const char* who) const {
    const auto found = objects.find(object);
    if (found == objects.end()) {
        stop(who, "unknown or collected object");
    }
    return *found->second;
}

jsplugin_obj* FakeHost::make(Object model) {
    auto object = std::make_unique<Object>(std::move(model));
    jsplugin_obj* const address = object.get();
    objects[address] = std::move(object);
    return address;
}

jsplugin_obj* FakeHost::open() {
    jsplugin_obj* document = make(Object(Kind::Document));
    reopen(document);
    return document;
}

void FakeHost::reopen(jsplugin_obj* document) {
    at(document, "reopen") = Object(Kind::Document, document);
    const InPlugin inside;
    plugin.init(document);
}

void FakeHost::unload(jsplugin_obj* document) {
    polls.erase(std::remove_if(polls.begin(), polls.end(),
                               [&](const Poll& poll) { return poll.document == document; }),
                polls.end());
    for (jsplugin_unload* listener : std::exchange(at(document, "unload").unloadListeners, {})) {
        const InPlugin inside;
        listener(document);
    }
}

void FakeHost::close(jsplugin_obj* document) {
    unload(document);
    trace();
    collectIf([&](const Object& object) {
        return object.document == document && object.kind != Kind::Document && !object.marked;
    });
}

jsplugin_obj* FakeHost::function(jsplugin_obj* document, std::function<void(const Values&)> body) {
    Object model(Kind::Function, document);
    model.body = std::move(body);
    return make(std::move(model));
}

jsplugin_obj* FakeHost::foreignObject(jsplugin_obj* document) {
    Object model(Kind::Foreign, document);
    // Whoever takes this for a pointer to something of its own reads far outside the process.
    model.plugin_private = reinterpret_cast<void*>(0x10);
    return make(std::move(model));
}

void FakeHost::collect(jsplugin_obj* object) {
    Object& doomed = at(object, "collect");
    for (const auto& kept : std::exchange(doomed.functions, {})) {
        collect(kept.second);
    }
    for (auto& entry : objects) {
        auto& functions = entry.second->functions;
        for (auto kept = functions.begin(); kept != functions.end();) {
            kept = kept->second == object ? functions.erase(kept) : std::next(kept);
        }
    }
    if (auto* destructor = std::exchange(doomed.destructor, nullptr)) {
        const InPlugin inside;
        destructor(object);
    }
    objects.erase(object);
}

void FakeHost::collectIf(const std::function<bool(const Object&)>& isDoomed) {
    std::vector<jsplugin_obj*> doomed;
    for (const auto& entry : objects) {
        if (isDoomed(*entry.second)) {
            doomed.push_back(entry.second.get());
        }
    }
    for (jsplugin_obj* object : doomed) {
        if (alive(object)) {
            collect(object);
        }
    }
}

void FakeHost::recycle(jsplugin_obj* function, jsplugin_obj* document) {
    at(function, "recycle") = Object(Kind::Function, document);
}

// A function may have been handed to an object of another document, which outlives its own.
void FakeHost::trace() {
    std::vector<jsplugin_obj*> documents;
    for (auto& entry : objects) {
        entry.second->marked = false;
        if (entry.second->kind == Kind::Document) {
            documents.push_back(entry.second.get());
        }
    }
    tracing = true;
    for (jsplugin_obj* const document : documents) {
        const InPlugin inside;
        plugin.gc_trace(document);
    }
    tracing = false;
}

void FakeHost::collectGarbage(jsplugin_obj* document) {
    trace();
    collectIf([&](const Object& object) {
        return object.kind == Kind::Function && object.document == document && !object.marked;
    });
}

// ---- Script and time ----

Answer FakeHost::global(jsplugin_obj* document, const char* name) const {
    jsplugin_value slot{};
    const int code = enterPlugin([&] { return plugin.global_getter(document, name, &slot); });
    return {code, copyOf(slot)};
}

Answer FakeHost::get(jsplugin_obj* object, const std::string& name) {
    jsplugin_value slot{};
    auto* const getter = at(object, "get").getter;
    const int code = enterPlugin([&] { return getter(object, name.c_str(), &slot); });
    return {code, copyOf(slot)};
}

Answer FakeHost::set(jsplugin_obj* object, const std::string& name, const Value& value) {
    jsplugin_value slot = slotOf(value);
    auto* const setter = at(object, "set").setter;
    const int code = enterPlugin([&] { return setter(object, name.c_str(), &slot); });
    return {code, code == JSP_PUT_EXCEPTION ? copyOf(slot) : Value()};
}

Answer FakeHost::call(jsplugin_obj* object, const std::string& name, const Values& arguments) {
    auto& functions = at(object, "call").functions;
    auto known = functions.find(name);
    if (known == functions.end()) {
        const Answer read = get(object, name);
        if (read.code != JSP_GET_VALUE_CACHE || read.value.object == nullptr) {
            return {-1, read.value};
        }
        known = functions.emplace(name, read.value.object).first;
    }
    return invoke(object, known->second, arguments);
}

Answer FakeHost::invoke(jsplugin_obj* thisObject, jsplugin_obj* function, const Values& arguments) {
    std::vector<jsplugin_value> slots;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(slots), slotOf);
    jsplugin_value result{};
    auto* const body = at(function, "invoke").call;
    if (body == nullptr) {
        return {-1, {}};  // no function
    }
    const int code = enterPlugin([&] {
        return body(thisObject, function, static_cast<int>(slots.size()),
                    slots.empty() ? nullptr : slots.data(), &result);
    });
    return {code, copyOf(result)};
}

jsplugin_obj* FakeHost::find(jsplugin_obj* document, const std::string& path) {
    std::istringstream steps(path);
    std::string name;
    std::getline(steps, name, '.');
    Answer answer = global(document, name.c_str());
    while (answer.value.object != nullptr && std::getline(steps, name, '.')) {
        answer = get(answer.value.object, name);
    }
    if (answer.value.object == nullptr) {
        stop(path.c_str(), "no such object");
    }
    return answer.value.object;
}

void FakeHost::advance(unsigned milliseconds) {
    const unsigned long until = now + milliseconds;
    while (!polls.empty()) {
        const auto next = std::min_element(polls.begin(), polls.end(),
                                           [](auto& a, auto& b) { return a.due < b.due; });
        if (next->due > until) {
            break;
        }
        now = next->due;
        next->due += next->interval;
        const Poll due = *next;
        if (enterPlugin([&] { return due.poll(due.document); }) == 0 &&
            at(due.document, "poll").unloadListeners.size() > 0) {
            stop("poll", "ended in an open document");
        }
    }
    now = until;
}

int FakeHost::callsOf(jsplugin_obj* function) const {
    return static_cast<int>(std::count_if(
        calls.begin(), calls.end(), [&](const Call& call) { return call.function == function; }));
}
