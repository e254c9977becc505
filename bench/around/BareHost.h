#ifndef SONOLET_BENCH_AROUND_BAREHOST_H
#define SONOLET_BENCH_AROUND_BAREHOST_H

#include "jsplugin.h"

#include <cstddef>
#include <vector>

// A browser that costs next to nothing: what the plug-in is asked and answers, without a script
// engine. One at a time, on one thread. What goes wrong throws std::runtime_error.
class BareHost final {
public:
    using Entry = int(struct jsplugin_capabilities** result, jsplugin_callbacks* callbacks);

    // Room for so many objects and functions is made at once, lest it counts as the plug-in's.
    explicit BareHost(Entry* entry, std::size_t room = 1024);
    ~BareHost();

    BareHost(const BareHost&) = delete;
    BareHost& operator=(const BareHost&) = delete;

    jsplugin_obj* open();
    void close(jsplugin_obj* document);  // and collects it

    jsplugin_obj* global(jsplugin_obj* document, const char* name);

    // A read that is answered with a value; an object of the answer is the caller's to collect.
    jsplugin_value read(jsplugin_obj* object, const char* name);
    jsplugin_obj* readObject(jsplugin_obj* object, const char* name) {
        return read(object, name).u.object;
    }

    // Reads the function, calls it, and collects it.
    jsplugin_value
    call(jsplugin_obj* object, const char* name, std::vector<jsplugin_value> arguments = {});

    // What a function object does.
    static jsplugin_function* functionOf(const jsplugin_obj* function);

    // A function of the page, which does nothing.
    jsplugin_obj* pageFunction();
    unsigned long called() const { return callsOfPage; }

    void collect(jsplugin_obj* object);

    // The document's polls once: the framework's, and the plug-in's own.
    static void tick(jsplugin_obj* document);

    static jsplugin_value number(double value);
    static jsplugin_value text(const char* value);
    static jsplugin_value native(jsplugin_obj* object);
    static jsplugin_value page(jsplugin_obj* object);

private:
    struct Object : jsplugin_obj {
        jsplugin_getter* getter;
        jsplugin_function* call;
        jsplugin_destructor* destructor;
        // A document's.
        jsplugin_poll* polls[2];
        jsplugin_unload* unload;
    };

    static BareHost* instance;
    static jsplugin_callbacks table();
    Object* make();
    void addRoom(std::size_t count);

    jsplugin_callbacks callbacks;
    struct jsplugin_capabilities* plugin = nullptr;
    std::vector<Object*> blocks;  // of memory
    std::vector<Object*> unused;
    unsigned long callsOfPage = 0;
};

#endif
