#include "FakeHost.h"

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

// Copies what a value slot holds; an answered string is good until the next call only.
Value copyOf(const jsplugin_value& slot) {
    Value value;
    value.type = slot.type;
    switch (slot.type) {
    case JSP_TYPE_NATIVE_OBJECT:
    case JSP_TYPE_OBJECT:
        value.object = slot.u.object;
        break;
    case JSP_TYPE_STRING:
    case JSP_TYPE_EXPRESSION:
        value.string = slot.u.string;
        break;
    case JSP_TYPE_NUMBER:
        value.number = slot.u.number;
        break;
    case JSP_TYPE_BOOLEAN:
        value.number = slot.u.boolean;
        break;
    default:
        break;
    }
    return value;
}

// Borrows the strings of `value`.
jsplugin_value slotOf(const Value& value) {
    jsplugin_value slot{};
    slot.type = value.type;
    if (value.type == JSP_TYPE_NATIVE_OBJECT || value.type == JSP_TYPE_OBJECT) {
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

Value Value::null() {
    Value value;
    value.type = JSP_TYPE_NULL;
    return value;
}

Value Value::expression(const std::string& text) {
    Value value(text);
    value.type = JSP_TYPE_EXPRESSION;
    return value;
}

bool Value::operator==(const Value& other) const {
    return type == other.type && number == other.number && string == other.string &&
           object == other.object;
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

struct FakeHost::Table {
    static void enter() {
        if (instance == nullptr) {
            stop("callback", "called without a host");
        }
        // The hook may call the plug-in, which calls the host again.
        if (auto hook = std::exchange(instance->duringCallbacks, nullptr)) {
            hook();
            instance->duringCallbacks = std::move(hook);
        }
    }

    static int
    create(const char* who, bool refused, jsplugin_obj* ctx, Object model, jsplugin_obj** result) {
        enter();
        model.document = instance->at(ctx, who).document;
        if (refused) {
            return 0;
        }
        *result = instance->make(std::move(model));
        return JSP_CREATE_OK;
    }

    static int createFunction(jsplugin_obj* ctx,
                              jsplugin_getter* getter,
                              jsplugin_setter* setter,
                              jsplugin_function* call,
                              jsplugin_destructor* destructor,
                              jsplugin_gc_trace*,
                              jsplugin_obj** result) {
        Object model(Kind::NativeFunction);
        model.getter = getter;
        model.setter = setter;
        model.call = call;
        model.destructor = destructor;
        return create("create_function", instance->refusesFunctions, ctx, model, result);
    }

    static int createObject(jsplugin_obj* ctx,
                            jsplugin_getter* getter,
                            jsplugin_setter* setter,
                            jsplugin_destructor* destructor,
                            jsplugin_gc_trace*,
                            jsplugin_obj** result) {
        Object model(Kind::Native);
        model.getter = getter;
        model.setter = setter;
        model.destructor = destructor;
        return create("create_object", instance->refusesObjects, ctx, model, result);
    }

    static int addPoll(jsplugin_obj* ctx, unsigned interval, jsplugin_poll* poll) {
        enter();
        instance->at(ctx, "add_poll_function");
        instance->polls.push_back(
            {ctx, interval, poll, instance->now + interval, instance->nextPoll++});
        instance->lifecycle.push_back("poll " + std::to_string(interval));
        return 0;
    }

    static int callFunction(jsplugin_obj* ctx,
                            jsplugin_obj* thisObject,
                            jsplugin_obj* function,
                            int count,
                            jsplugin_value* arguments,
                            void* reservedA,
                            void* reservedB) {
        enter();
        if (reservedA != nullptr || reservedB != nullptr ||
            (count == 0) != (arguments == nullptr)) {
            stop("call_function", "arguments out of contract");
        }
        Call call{ctx, thisObject, function, {}};
        for (int i = 0; i < count; ++i) {
            call.arguments.push_back(copyOf(arguments[i]));
            if (call.arguments.back().object != nullptr) {
                instance->at(call.arguments.back().object, "call_function: argument");
            }
        }
        instance->at(ctx, "call_function: context");
        auto body = instance->at(function, "call_function: function").body;
        instance->calls.push_back(call);
        if (body) {
            body(call.arguments);
        }
        return 0;
    }

    static int addUnloadListener(jsplugin_obj* ctx, jsplugin_unload* unload) {
        enter();
        instance->at(ctx, "add_unload_listener");
        instance->unloadListeners.emplace_back(ctx, unload);
        instance->lifecycle.emplace_back("unload listener");
        return 0;
    }

    static void mark(jsplugin_obj* object) {
        enter();
        if (!instance->tracing) {
            stop("gc_mark", "called outside a trace");
        }
        instance->at(object, "gc_mark").marked = true;
    }
};

struct jsplugin_capabilities& FakeHost::load() {
    static jsplugin_callbacks table = [] {
        jsplugin_callbacks filled{};
        filled.create_function = Table::createFunction;
        filled.create_object = Table::createObject;
        filled.add_poll_function = Table::addPoll;
        filled.call_function = Table::callFunction;
        filled.add_unload_listener = Table::addUnloadListener;
        filled.gc_mark = Table::mark;
        return filled;
    }();
    struct jsplugin_capabilities* record = nullptr;
    if (jsplugin_capabilities(&record, &table) != 0 || record == nullptr) {
        stop("jsplugin_capabilities", "did not answer 0 with a record");
    }
    return *record;
}

const struct jsplugin_capabilities& FakeHost::plugin() {
    static const struct jsplugin_capabilities& record = load();
    return record;
}

FakeHost::FakeHost() {
    if (instance != nullptr) {
        stop("FakeHost", "one at a time");
    }
    instance = this;
    plugin();
}

FakeHost::~FakeHost() {
    duringCallbacks = nullptr;
    std::vector<jsplugin_obj*> documents;
    for (const auto& entry : objects) {
        if (entry.second->kind == Kind::Document) {
            documents.push_back(entry.second.get());
        }
    }
    for (jsplugin_obj* document : documents) {
        close(document);
    }
    objects.clear();
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
    plugin().init(document);
}

void FakeHost::unload(jsplugin_obj* document) {
    std::vector<jsplugin_unload*> listeners;
    for (auto entry = unloadListeners.begin(); entry != unloadListeners.end();) {
        if (entry->first == document) {
            listeners.push_back(entry->second);
            entry = unloadListeners.erase(entry);
        } else {
            ++entry;
        }
    }
    polls.erase(std::remove_if(polls.begin(), polls.end(),
                               [&](const Poll& poll) { return poll.document == document; }),
                polls.end());
    for (jsplugin_unload* listener : listeners) {
        listener(document);
    }
}

void FakeHost::collectAll(jsplugin_obj* document) {
    std::vector<jsplugin_obj*> doomed;
    for (const auto& entry : objects) {
        if (entry.second->document == document && entry.second.get() != document) {
            doomed.push_back(entry.second.get());
        }
    }
    for (jsplugin_obj* object : doomed) {
        if (alive(object)) {
            collect(object);
        }
    }
}

void FakeHost::close(jsplugin_obj* document) {
    unload(document);
    collectAll(document);
}

jsplugin_obj* FakeHost::function(jsplugin_obj* document,
                                 std::function<void(const std::vector<Value>&)> body) {
    Object model(Kind::PageFunction, document);
    model.body = std::move(body);
    return make(std::move(model));
}

jsplugin_obj* FakeHost::pageObject(jsplugin_obj* document) {
    return make(Object(Kind::Page, document));
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
        destructor(object);
    }
    objects.erase(object);
}

void FakeHost::recycle(jsplugin_obj* function, jsplugin_obj* document) {
    at(function, "recycle") = Object(Kind::PageFunction, document);
}

void FakeHost::collectGarbage(jsplugin_obj* document) {
    for (auto& entry : objects) {
        entry.second->marked = false;
    }
    tracing = true;
    plugin().gc_trace(document);
    tracing = false;
    std::vector<jsplugin_obj*> doomed;
    for (const auto& entry : objects) {
        const Object& object = *entry.second;
        if (object.kind == Kind::PageFunction && object.document == document && !object.marked) {
            doomed.push_back(entry.second.get());
        }
    }
    for (jsplugin_obj* object : doomed) {
        collect(object);
    }
}

Answer FakeHost::global(jsplugin_obj* document, const char* name) {
    jsplugin_value slot{};
    const int code = plugin().global_getter(document, name, &slot);
    return {code, copyOf(slot)};
}

Answer FakeHost::get(jsplugin_obj* object, const std::string& name) {
    jsplugin_value slot{};
    const int code = at(object, "get").getter(object, name.c_str(), &slot);
    return {code, copyOf(slot)};
}

Answer FakeHost::set(jsplugin_obj* object, const std::string& name, const Value& value) {
    jsplugin_value slot = slotOf(value);
    const int code = at(object, "set").setter(object, name.c_str(), &slot);
    return {code, code == JSP_PUT_EXCEPTION ? copyOf(slot) : Value()};
}

Answer
FakeHost::call(jsplugin_obj* object, const std::string& name, const std::vector<Value>& arguments) {
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

Answer FakeHost::invoke(jsplugin_obj* thisObject,
                        jsplugin_obj* function,
                        const std::vector<Value>& arguments) {
    std::vector<jsplugin_value> slots;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(slots), slotOf);
    jsplugin_value result{};
    const int code = at(function, "invoke")
                         .call(thisObject, function, static_cast<int>(slots.size()),
                               slots.empty() ? nullptr : slots.data(), &result);
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
    for (;;) {
        const auto next =
            std::min_element(polls.begin(), polls.end(), [](const Poll& a, const Poll& b) {
                return a.due != b.due ? a.due < b.due : a.id < b.id;
            });
        if (next == polls.end() || next->due > until) {
            break;
        }
        now = next->due;
        next->due += next->interval;
        const Poll due = *next;
        if (due.poll(due.document) == 0) {
            polls.erase(std::remove_if(polls.begin(), polls.end(),
                                       [&](const Poll& poll) { return poll.id == due.id; }),
                        polls.end());
        }
    }
    now = until;
}

std::vector<unsigned> FakeHost::intervals(jsplugin_obj* document) const {
    std::vector<unsigned> found;
    for (const Poll& poll : polls) {
        if (poll.document == document) {
            found.push_back(poll.interval);
        }
    }
    return found;
}

int FakeHost::callsOf(jsplugin_obj* function) const {
    return static_cast<int>(std::count_if(
        calls.begin(), calls.end(), [&](const Call& call) { return call.function == function; }));
}
