#include "around/BareHost.h"

#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

BareHost* BareHost::instance = nullptr;

jsplugin_callbacks BareHost::table() {
    jsplugin_callbacks made{};
    made.create_object = [](auto*, auto* getter, auto*, auto* destructor, auto*, auto** result) {
        Object* const object = instance->make();
        object->getter = getter;
        object->destructor = destructor;
        *result = object;
        return static_cast<int>(JSP_CREATE_OK);
    };
    made.create_function = [](auto*, auto*, auto*, auto* call, auto* destructor, auto*,
                              auto** result) {
        Object* const object = instance->make();
        object->call = call;
        object->destructor = destructor;
        *result = object;
        return static_cast<int>(JSP_CREATE_OK);
    };
    made.add_poll_function = [](auto* document, unsigned, auto* poll) {
        auto& polls = static_cast<Object*>(document)->polls;
        polls[polls[0] == nullptr ? 0 : 1] = poll;
        return 0;
    };
    made.add_unload_listener = [](auto* document, auto* unload) {
        static_cast<Object*>(document)->unload = unload;
        return 0;
    };
    made.call_function = [](auto*, auto*, auto*, int, auto*, void*, void*) {
        ++instance->callsOfPage;
        return 0;
    };
    made.gc_mark = [](auto*) {};
    return made;
}

BareHost::BareHost(Entry* entry, std::size_t room) : callbacks(table()) {
    instance = this;
    addRoom(room);
    if (entry(&plugin, &callbacks) != 0) {
        throw std::runtime_error("the plug-in does not start");
    }
}

BareHost::~BareHost() {
    for (Object* const block : blocks) {
        std::free(block);
    }
    instance = nullptr;
}

// Not with new, which a benchmark may count.
void BareHost::addRoom(std::size_t count) {
    auto* const block = static_cast<Object*>(std::calloc(count, sizeof(Object)));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    blocks.push_back(block);
    unused.reserve(unused.capacity() + count);
    for (std::size_t i = count; i > 0; --i) {
        unused.push_back(block + i - 1);
    }
}

BareHost::Object* BareHost::make() {
    if (unused.empty()) {
        addRoom(1024);
    }
    Object* const object = unused.back();
    unused.pop_back();
    *object = Object{};
    return object;
}

jsplugin_obj* BareHost::open() {
    Object* const document = make();
    plugin->init(document);
    return document;
}

void BareHost::close(jsplugin_obj* document) {
    static_cast<Object*>(document)->unload(document);
    collect(document);
}

jsplugin_obj* BareHost::global(jsplugin_obj* document, const char* name) {
    jsplugin_value result{};
    plugin->global_getter(document, name, &result);
    if (result.type != JSP_TYPE_NATIVE_OBJECT) {
        throw std::runtime_error(std::string("no global ") + name);
    }
    return result.u.object;
}

jsplugin_value BareHost::read(jsplugin_obj* object, const char* name) {
    jsplugin_value result{};
    const int answer = static_cast<Object*>(object)->getter(object, name, &result);
    if (answer != JSP_GET_VALUE && answer != JSP_GET_VALUE_CACHE) {
        throw std::runtime_error(std::string("no value of ") + name);
    }
    return result;
}

jsplugin_value
BareHost::call(jsplugin_obj* object, const char* name, std::vector<jsplugin_value> arguments) {
    jsplugin_obj* const function = readObject(object, name);
    jsplugin_value result{};
    const int answer = functionOf(function)(object, function, static_cast<int>(arguments.size()),
                                            arguments.data(), &result);
    collect(function);
    if (answer != JSP_CALL_VALUE && answer != JSP_CALL_NO_VALUE) {
        throw std::runtime_error(
            std::string(name) + ": " +
            (result.type == JSP_TYPE_STRING ? result.u.string : "no function"));
    }
    return result;
}

jsplugin_function* BareHost::functionOf(const jsplugin_obj* function) {
    return static_cast<const Object*>(function)->call;
}

jsplugin_obj* BareHost::pageFunction() {
    return make();
}

void BareHost::collect(jsplugin_obj* object) {
    auto* const made = static_cast<Object*>(object);
    if (made->destructor != nullptr) {
        made->destructor(made);
    }
    unused.push_back(made);
}

void BareHost::tick(jsplugin_obj* document) {
    for (jsplugin_poll* const poll : static_cast<Object*>(document)->polls) {
        poll(document);
    }
}

jsplugin_value BareHost::number(double value) {
    jsplugin_value made{};
    made.type = JSP_TYPE_NUMBER;
    made.u.number = value;
    return made;
}

jsplugin_value BareHost::text(const char* value) {
    jsplugin_value made{};
    made.type = JSP_TYPE_STRING;
    made.u.string = value;
    return made;
}

jsplugin_value BareHost::native(jsplugin_obj* object) {
    jsplugin_value made{};
    made.type = JSP_TYPE_NATIVE_OBJECT;
    made.u.object = object;
    return made;
}

jsplugin_value BareHost::page(jsplugin_obj* object) {
    jsplugin_value made = native(object);
    made.type = JSP_TYPE_OBJECT;
    return made;
}
