// The recorded browser.

#include "replay/Parts.h"

#include <unordered_map>
#include <vector>

using nlohmann::json;

namespace {

struct jsplugin_capabilities* plugin = nullptr;

// By the recorded address.
std::unordered_map<Twins::Address, jsplugin_poll*> polls;
std::unordered_map<Twins::Address, jsplugin_unload*> unloads;

// ---- What the plug-in calls ----

// What the call that is under way was given as the recording has it.
template <class Functions>
void remember(Functions& all, std::size_t which, typename Functions::mapped_type function) {
    replayer().reading([&] {
        const json in = replayer().argumentsOfNext();
        if (which < in.size()) {
            all[Twins::address(in[which])] = function;
        }
    });
}

Twins::Object* made(int& answer, jsplugin_obj** result) {
    return replayer().reading([&]() -> Twins::Object* {
        const json out = replayer().answered();
        answer = out.at(0).get<int>();
        if (answer != JSP_CREATE_OK || out.size() < 2) {
            return nullptr;
        }
        Twins::Object& object = replayer().twins.makeObject(out[1]);
        *result = &object.own;
        return &object;
    });
}

int createFunction(jsplugin_obj*,
                   jsplugin_getter* getter,
                   jsplugin_setter* setter,
                   jsplugin_function* call,
                   jsplugin_destructor* destructor,
                   jsplugin_gc_trace* trace,
                   jsplugin_obj** result) {
    int answer = 0;
    if (Twins::Object* const object = made(answer, result)) {
        object->getter = getter;
        object->setter = setter;
        object->call = call;
        object->destructor = destructor;
        object->trace = trace;
    }
    return answer;
}

int createObject(jsplugin_obj* document,
                 jsplugin_getter* getter,
                 jsplugin_setter* setter,
                 jsplugin_destructor* destructor,
                 jsplugin_gc_trace* trace,
                 jsplugin_obj** result) {
    return createFunction(document, getter, setter, nullptr, destructor, trace, result);
}

int addPollFunction(jsplugin_obj*, unsigned, jsplugin_poll* poll) {
    remember(polls, 2, poll);
    return replayer().answered<int>();
}

int addUnloadListener(jsplugin_obj*, jsplugin_unload* unload) {
    remember(unloads, 1, unload);
    return replayer().answered<int>();
}

int callFunction(jsplugin_obj*, jsplugin_obj*, jsplugin_obj*, int, jsplugin_value*, void*, void*) {
    return replayer().answered<int>();
}

void mark(jsplugin_obj*) {
    replayer().answered();
}

// ---- What the host calls ----

Twins::Object& objectIn(const json& value) {
    Twins::Object* const object = replayer().twins.object(value);
    if (object == nullptr) {
        throw NotReplayable("a call of no object");
    }
    return *object;
}

jsplugin_obj* pointerTo(const json& value) {
    Twins::Object* const object = replayer().twins.object(value);
    return object != nullptr ? &object->own : nullptr;
}

// A function that the plug-in handed out, or what is missing.
template <class Function>
Function* there(Function* function, const char* what) {
    if (function == nullptr) {
        throw NotReplayable(std::string("the plug-in has given no ") + what);
    }
    return function;
}

template <class Function>
Function* found(const std::unordered_map<Twins::Address, Function*>& all,
                const json& value,
                const char* what) {
    const auto at = all.find(Twins::address(value));
    return there(at != all.end() ? at->second : nullptr, what);
}

void get(const json& in, jsplugin_getter* getter) {
    jsplugin_value slot{};
    there(getter, "getter")(pointerTo(in.at(0)), replayer().twins.text(in.at(1)), &slot);
}

void set(const json& in, jsplugin_setter* setter) {
    jsplugin_value slot = replayer().twins.slot(in.at(2));
    there(setter, "setter")(pointerTo(in.at(0)), replayer().twins.text(in.at(1)), &slot);
}

void callFunctionOfPlugin(const json& in) {
    std::vector<jsplugin_value> arguments;
    for (std::size_t i = 3; i < in.size(); ++i) {
        arguments.push_back(replayer().twins.slot(in[i]));
    }
    jsplugin_value result{};
    there(objectIn(in.at(1)).call, "function")(
        pointerTo(in.at(0)), pointerTo(in.at(1)), Twins::count(in.at(2), arguments.size()),
        arguments.empty() ? nullptr : arguments.data(), &result);
}

void destroy(const json& in) {
    Twins::Object& object = objectIn(in.at(0));
    there(object.destructor, "destructor")(&object.own);
    object = Twins::Object();
}

void handleObject(const json& in) {
    std::vector<jsplugin_attr> attributes;
    const json texts = in.at(3).value("texts", json::array());
    for (std::size_t i = 0; i + 1 < texts.size(); i += 2) {
        attributes.push_back(
            {replayer().twins.text(texts[i]), replayer().twins.text(texts[i + 1])});
    }
    Twins::Object given;
    jsplugin_notify* notify[3] = {};
    Twins::Object& parent = objectIn(in.at(1));
    const int answer = there(plugin->handle_object, "handle_object")(
        pointerTo(in.at(0)), &parent.own, Twins::count(in.at(2), attributes.size()),
        attributes.empty() ? nullptr : attributes.data(), &given.getter, &given.setter,
        &given.destructor, &given.trace, &notify[0], &notify[1], &notify[2]);
    if (answer == 1) {
        given.own = parent.own;
        parent = given;
    }
}

}  // namespace

jsplugin_callbacks* replayedHost() {
    static jsplugin_callbacks table{};
    table.create_function = &createFunction;
    table.create_object = &createObject;
    table.add_poll_function = &addPollFunction;
    table.call_function = &callFunction;
    table.add_unload_listener = &addUnloadListener;
    table.gc_mark = &mark;
    return &table;
}

void setPlugin(struct jsplugin_capabilities* offered) {
    plugin = offered;
}

void addHostCalls() {
    Replayer& to = replayer();
    to.invoke(Fn::allow_access, [](const json& in) {
        Twins& twins = replayer().twins;
        there(plugin->allow_access, "allow_access")(twins.text(in.at(0)), twins.text(in.at(1)),
                                                    in.at(2).get<int>());
    });
    to.invoke(Fn::init, [](const json& in) { there(plugin->init, "init")(pointerTo(in.at(0))); });
    to.invoke(Fn::destroy,
              [](const json& in) { there(plugin->destroy, "destroy")(pointerTo(in.at(0))); });
    to.invoke(Fn::document_gc_trace,
              [](const json& in) { there(plugin->gc_trace, "trace")(pointerTo(in.at(0))); });
    to.invoke(Fn::global_getter, [](const json& in) { get(in, plugin->global_getter); });
    to.invoke(Fn::global_setter, [](const json& in) { set(in, plugin->global_setter); });
    to.invoke(Fn::handle_object, &handleObject);
    to.invoke(Fn::getter, [](const json& in) { get(in, objectIn(in.at(0)).getter); });
    to.invoke(Fn::setter, [](const json& in) { set(in, objectIn(in.at(0)).setter); });
    to.invoke(Fn::call, &callFunctionOfPlugin);
    to.invoke(Fn::destructor, &destroy);
    to.invoke(Fn::gc_trace, [](const json& in) {
        there(objectIn(in.at(0)).trace, "trace")(pointerTo(in.at(0)));
    });
    to.invoke(Fn::poll, [](const json& in) {
        found(polls, in.at(1), "such poll function")(pointerTo(in.at(0)));
    });
    to.invoke(Fn::unload, [](const json& in) {
        found(unloads, in.at(1), "such unload listener")(pointerTo(in.at(0)));
    });
}
