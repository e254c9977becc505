// The browser's interface, in both directions.
//
// The plug-in hands out few functions for many objects: each gets a function of the layer's in its
// place, out of a fixed stock, so that no call has to look anything up. Of what the stock has not
// enough for, the plug-in's own function is handed on, and its calls are not seen.

#include "tap/Call.h"
#include "tap/Taps.h"

#include "jsplugin.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <mutex>
#include <utility>
#include <vector>

namespace {

jsplugin_callbacks* host = nullptr;
struct jsplugin_capabilities* plugin = nullptr;

// ---- How each kind of function is passed on ----

using Getter = int (*)(jsplugin_obj*, const char*, jsplugin_value*);
using Setter = int (*)(jsplugin_obj*, const char*, jsplugin_value*);

void endWithSlot(Call& call, int answer, bool isFilled, const jsplugin_value* slot) {
    const Value results[] = {integerValue(answer),
                             isFilled && slot != nullptr ? slotValue(*slot) : Value()};
    call.end(results, isFilled ? 2 : 1);
}

int get(
    Fn function, Getter original, jsplugin_obj* object, const char* name, jsplugin_value* slot) {
    const Value values[] = {objectValue(object), textValue(Tag::Text, name)};
    Call call(function, values, 2);
    const int answer = original(object, name, slot);
    endWithSlot(call, answer,
                answer == JSP_GET_VALUE || answer == JSP_GET_VALUE_CACHE ||
                    answer == JSP_GET_EXCEPTION,
                slot);
    return answer;
}

int set(
    Fn function, Setter original, jsplugin_obj* object, const char* name, jsplugin_value* slot) {
    const Value values[] = {objectValue(object), textValue(Tag::Text, name),
                            slot != nullptr ? slotValue(*slot) : Value()};
    Call call(function, values, 3);
    const int answer = original(object, name, slot);
    endWithSlot(call, answer, answer == JSP_PUT_EXCEPTION, slot);
    return answer;
}

// The objects of a call, the number of its arguments, and these.
class ScriptArguments final {
public:
    ScriptArguments(std::initializer_list<jsplugin_obj*> objects,
                    int argc,
                    const jsplugin_value* argv) {
        const std::size_t count = argc > 0 && argv != nullptr ? static_cast<std::size_t>(argc) : 0;
        size = static_cast<unsigned>(objects.size() + 1 + count);
        values = few.data();
        if (size > few.size()) {
            many.resize(size);
            values = many.data();
        }
        Value* next = values;
        for (const jsplugin_obj* const object : objects) {
            *next++ = objectValue(object);
        }
        *next++ = integerValue(argc);
        for (std::size_t i = 0; i < count; ++i) {
            *next++ = slotValue(argv[i]);
        }
    }
    ScriptArguments(const ScriptArguments&) = delete;
    ScriptArguments& operator=(const ScriptArguments&) = delete;

    Value* values;
    unsigned size;

private:
    std::array<Value, 16> few;
    std::vector<Value> many;
};

// By the type of the plug-in's function: they are not all different, so the function says which.
struct GetterOf {
    static int pass(Getter original, jsplugin_obj* object, const char* name, jsplugin_value* slot) {
        return get(Fn::getter, original, object, name, slot);
    }
};
struct SetterOf {
    static int pass(Setter original, jsplugin_obj* object, const char* name, jsplugin_value* slot) {
        return set(Fn::setter, original, object, name, slot);
    }
};
struct CallOf {
    static int pass(jsplugin_function* original,
                    jsplugin_obj* thisObject,
                    jsplugin_obj* functionObject,
                    int argc,
                    jsplugin_value* argv,
                    jsplugin_value* result) {
        const ScriptArguments arguments({thisObject, functionObject}, argc, argv);
        Call call(Fn::call, arguments.values, arguments.size);
        const int answer = original(thisObject, functionObject, argc, argv, result);
        endWithSlot(call, answer, answer == JSP_CALL_VALUE || answer == JSP_CALL_EXCEPTION, result);
        return answer;
    }
};
template <Fn function>
struct ObjectOf {
    static void pass(void (*original)(jsplugin_obj*), jsplugin_obj* object) {
        const Value value = objectValue(object);
        Call call(function, &value, 1);
        original(object);
        call.end();
    }
};
struct UnloadOf {
    static void pass(jsplugin_unload* original, jsplugin_obj* document) {
        const Value values[] = {objectValue(document),
                                Value::of(Tag::Pointer, reinterpret_cast<const void*>(original))};
        Call call(Fn::unload, values, 2);
        original(document);
        call.end();
    }
};
struct PollOf {
    static int pass(jsplugin_poll* original, const jsplugin_obj* document) {
        const Value values[] = {objectValue(document),
                                Value::of(Tag::Pointer, reinterpret_cast<const void*>(original))};
        Call call(Fn::poll, values, 2);
        const int answer = original(document);
        call.end(integerValue(answer));
        return answer;
    }
};

// ---- The stock ----

template <class Policy, class Signature>
class Stock;

template <class Policy, class R, class... A>
class Stock<Policy, R(A...)> {
public:
    using Function = R (*)(A...);

    // What is to be handed out for it; null for null.
    static Function standIn(Function original) {
        if (original == nullptr) {
            return nullptr;
        }
        static std::mutex mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        for (std::size_t i = 0; i < size; ++i) {
            if (originals[i] == nullptr) {
                originals[i] = original;
            }
            if (originals[i] == original) {
                return standIns[i];
            }
        }
        return original;
    }

private:
    static constexpr std::size_t size = 16;

    template <std::size_t i>
    static R at(A... arguments) {
        return Policy::pass(originals[i], arguments...);
    }
    template <std::size_t... i>
    static constexpr std::array<Function, size> make(std::index_sequence<i...>) {
        return {&at<i>...};
    }

    static inline Function originals[size] = {};
    static constexpr std::array<Function, size> standIns = make(std::make_index_sequence<size>());
};

using Getters = Stock<GetterOf, jsplugin_getter>;
using Setters = Stock<SetterOf, jsplugin_setter>;
using Functions = Stock<CallOf, jsplugin_function>;
using Destructors = Stock<ObjectOf<Fn::destructor>, jsplugin_destructor>;
using Traces = Stock<ObjectOf<Fn::gc_trace>, jsplugin_gc_trace>;
using Polls = Stock<PollOf, jsplugin_poll>;
using Unloads = Stock<UnloadOf, jsplugin_unload>;

// ---- What the plug-in calls ----

template <class Function>
Value pointerValue(Function* function) {
    return Value::of(Tag::Pointer, reinterpret_cast<const void*>(function));
}

void endWithObject(Call& call, int answer, jsplugin_obj* const* result) {
    const Value results[] = {integerValue(answer), answer == JSP_CREATE_OK && result != nullptr
                                                       ? objectValue(*result, true)
                                                       : Value()};
    call.end(results, answer == JSP_CREATE_OK ? 2 : 1);
}

int createFunction(jsplugin_obj* document,
                   jsplugin_getter* getter,
                   jsplugin_setter* setter,
                   jsplugin_function* function,
                   jsplugin_destructor* destructor,
                   jsplugin_gc_trace* trace,
                   jsplugin_obj** result) {
    const Value values[] = {objectValue(document),  pointerValue(getter),     pointerValue(setter),
                            pointerValue(function), pointerValue(destructor), pointerValue(trace)};
    Call call(Fn::create_function, values, 6);
    const int answer = host->create_function(
        document, Getters::standIn(getter), Setters::standIn(setter), Functions::standIn(function),
        Destructors::standIn(destructor), Traces::standIn(trace), result);
    endWithObject(call, answer, result);
    return answer;
}

int createObject(jsplugin_obj* document,
                 jsplugin_getter* getter,
                 jsplugin_setter* setter,
                 jsplugin_destructor* destructor,
                 jsplugin_gc_trace* trace,
                 jsplugin_obj** result) {
    const Value values[] = {objectValue(document), pointerValue(getter), pointerValue(setter),
                            pointerValue(destructor), pointerValue(trace)};
    Call call(Fn::create_object, values, 5);
    const int answer =
        host->create_object(document, Getters::standIn(getter), Setters::standIn(setter),
                            Destructors::standIn(destructor), Traces::standIn(trace), result);
    endWithObject(call, answer, result);
    return answer;
}

int addPollFunction(jsplugin_obj* document, unsigned interval, jsplugin_poll* poll) {
    const Value values[] = {objectValue(document), integerValue(interval), pointerValue(poll)};
    Call call(Fn::add_poll_function, values, 3);
    const int answer = host->add_poll_function(document, interval, Polls::standIn(poll));
    call.end(integerValue(answer));
    return answer;
}

int callFunction(jsplugin_obj* document,
                 jsplugin_obj* thisObject,
                 jsplugin_obj* functionObject,
                 int argc,
                 jsplugin_value* argv,
                 void* reservedA,
                 void* reservedB) {
    const ScriptArguments arguments({document, thisObject, functionObject}, argc, argv);
    Call call(Fn::call_function, arguments.values, arguments.size);
    const int answer =
        host->call_function(document, thisObject, functionObject, argc, argv, reservedA, reservedB);
    call.end(integerValue(answer));
    return answer;
}

int addUnloadListener(jsplugin_obj* document, jsplugin_unload* unload) {
    const Value values[] = {objectValue(document), pointerValue(unload)};
    Call call(Fn::add_unload_listener, values, 2);
    const int answer = host->add_unload_listener(document, Unloads::standIn(unload));
    call.end(integerValue(answer));
    return answer;
}

void mark(jsplugin_obj* object) {
    const Value value = objectValue(object);
    Call call(Fn::gc_mark, &value, 1);
    host->gc_mark(object);
    call.end();
}

// ---- What the host calls ----

int globalGetter(jsplugin_obj* object, const char* name, jsplugin_value* slot) {
    return get(Fn::global_getter, plugin->global_getter, object, name, slot);
}

int globalSetter(jsplugin_obj* object, const char* name, jsplugin_value* slot) {
    return set(Fn::global_setter, plugin->global_setter, object, name, slot);
}

void init(jsplugin_obj* document) {
    ObjectOf<Fn::init>::pass(plugin->init, document);
}

void destroy(jsplugin_obj* document) {
    ObjectOf<Fn::destroy>::pass(plugin->destroy, document);
}

void traceDocument(jsplugin_obj* document) {
    ObjectOf<Fn::document_gc_trace>::pass(plugin->gc_trace, document);
}

int allowAccess(const char* protocol, const char* name, int port) {
    const Value values[] = {textValue(Tag::Text, protocol), textValue(Tag::Text, name),
                            integerValue(port)};
    Call call(Fn::allow_access, values, 3);
    const int answer = plugin->allow_access(protocol, name, port);
    call.end(integerValue(answer));
    return answer;
}

int handleObject(jsplugin_obj* global,
                 jsplugin_obj* parent,
                 int attributeCount,
                 jsplugin_attr* attributes,
                 jsplugin_getter** getter,
                 jsplugin_setter** setter,
                 jsplugin_destructor** destructor,
                 jsplugin_gc_trace** trace,
                 jsplugin_notify** notifyA,
                 jsplugin_notify** notifyB,
                 jsplugin_notify** notifyC) {
    std::vector<const char*> texts;
    for (int i = 0; i < attributeCount && attributes != nullptr; ++i) {
        for (const char* const text : {attributes[i].name, attributes[i].value}) {
            texts.push_back(text != nullptr ? text : "");
        }
    }
    const Value values[] = {objectValue(global), objectValue(parent), integerValue(attributeCount),
                            Value::of(Tag::Texts, texts.data(), texts.size())};
    Call call(Fn::handle_object, values, 4);
    const int answer = plugin->handle_object(global, parent, attributeCount, attributes, getter,
                                             setter, destructor, trace, notifyA, notifyB, notifyC);
    if (answer == 1) {
        *getter = Getters::standIn(*getter);
        *setter = Setters::standIn(*setter);
        *destructor = Destructors::standIn(*destructor);
        *trace = Traces::standIn(*trace);
    }
    call.end(integerValue(answer));
    return answer;
}

// What is not there stays so.
template <class Function>
void stand(Function*& slot, Function* inItsPlace) {
    if (slot != nullptr) {
        slot = inItsPlace;
    }
}

}  // namespace

jsplugin_callbacks* hostTap(jsplugin_callbacks* ofHost) {
    static jsplugin_callbacks layers;
    host = ofHost;
    if (ofHost == nullptr) {
        return nullptr;
    }
    // What is reserved is the host's.
    layers = *ofHost;
    stand(layers.create_function, &createFunction);
    stand(layers.create_object, &createObject);
    stand(layers.add_poll_function, &addPollFunction);
    stand(layers.call_function, &callFunction);
    stand(layers.add_unload_listener, &addUnloadListener);
    stand(layers.gc_mark, &mark);
    return &layers;
}

struct jsplugin_capabilities* pluginTap(struct jsplugin_capabilities* ofPlugin) {
    static struct jsplugin_capabilities layers;
    plugin = ofPlugin;
    if (ofPlugin == nullptr) {
        return nullptr;
    }
    layers = *ofPlugin;
    stand(layers.global_getter, &globalGetter);
    stand(layers.global_setter, &globalSetter);
    stand(layers.init, &init);
    stand(layers.destroy, &destroy);
    stand(layers.handle_object, &handleObject);
    stand(layers.allow_access, &allowAccess);
    stand(layers.gc_trace, &traceDocument);
    return &layers;
}
