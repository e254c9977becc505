#ifndef SONOLET_TESTS_FAKES_FAKEHOST_H
#define SONOLET_TESTS_FAKES_FAKEHOST_H

#include "jsplugin.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

// A script value as the page holds it: strings are copies.
struct Value {
    Value() = default;
    // NOLINTBEGIN(google-explicit-constructor): tests write page values as literals
    Value(double value) : type(JSP_TYPE_NUMBER), number(value) {}
    Value(int value) : Value(static_cast<double>(value)) {}
    Value(bool value) : type(JSP_TYPE_BOOLEAN), number(value ? 1 : 0) {}
    Value(const char* value) : type(JSP_TYPE_STRING), string(value) {}
    Value(const std::string& value, int itsType = JSP_TYPE_STRING) : type(itsType), string(value) {}
    Value(jsplugin_obj* value);  // the host knows whether a plug-in made it
    // NOLINTEND(google-explicit-constructor)
    static Value null() { return {std::string(), JSP_TYPE_NULL}; }

    bool operator==(const Value& other) const;

    int type = JSP_TYPE_UNDEFINED;
    double number = 0;
    std::string string;
    jsplugin_obj* object = nullptr;
};

// What a read, a write or a call came to: the plug-in's code and the value in its slot.
struct Answer {
    bool operator==(const Answer& other) const {
        return code == other.code && value == other.value;
    }
    bool operator!=(const Answer& other) const { return !(*this == other); }
    int code;
    Value value;
};

std::ostream& operator<<(std::ostream& out, const Value& value);
std::ostream& operator<<(std::ostream& out, const Answer& answer);

// The answers that tests expect, by the way they came about.
// clang-format off
inline Answer returned(const Value& value) { return {JSP_CALL_VALUE, value}; }
inline Answer nothing() { return {JSP_CALL_NO_VALUE, {}}; }
inline Answer failed(const char* message) { return {JSP_CALL_EXCEPTION, message}; }
inline Answer valued(const Value& value) { return {JSP_GET_VALUE, value}; }
inline Answer cached(const Value& value) { return {JSP_GET_VALUE_CACHE, value}; }
inline Answer raised(const char* message) { return {JSP_GET_EXCEPTION, message}; }
inline Answer stored() { return {JSP_PUT_OK, {}}; }
inline Answer refused(const char* message) { return {JSP_PUT_EXCEPTION, message}; }
// clang-format on

// A browser of the test's own: documents, objects and a clock that moves only when told. One
// instance at a time; all on one thread. An object unknown to it (freed, or never made) stops the
// process with a message, wherever the plug-in hands it in.
class FakeHost {
public:
    using Values = std::vector<Value>;
    struct Call {
        jsplugin_obj* document;
        jsplugin_obj* thisObject;
        jsplugin_obj* function;
        Values arguments;
    };

    FakeHost();
    ~FakeHost();  // closes every document
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    static struct jsplugin_capabilities& load();  // once more than each host does

    // Documents. A closed one keeps its memory, so that `reopen` gives a later document its
    // address.
    jsplugin_obj* open();
    void reopen(jsplugin_obj* document);
    void unload(jsplugin_obj* document);  // runs the unload listeners, ends the polls
    void close(jsplugin_obj* document);   // and collects what no other document keeps

    // The page's functions, with a body or none, and another plug-in's objects.
    jsplugin_obj* function(jsplugin_obj* document,
                           std::function<void(const Values&)> body = nullptr);
    jsplugin_obj* foreignObject(jsplugin_obj* document);
    // The object dies with the functions kept for it: destructors run once, the memory goes.
    void collect(jsplugin_obj* object);
    // A page's function dies, and a later one of the document lives at the same address.
    void recycle(jsplugin_obj* function, jsplugin_obj* document);
    // Traces all documents and collects the page functions of this one that the plug-in does not
    // mark.
    void collectGarbage(jsplugin_obj* document);
    bool alive(jsplugin_obj* object) const { return objects.count(object) != 0; }

    // Script. `call` reads the function once per object and keeps it, as cacheable values are.
    Answer global(jsplugin_obj* document, const char* name) const;
    Answer get(jsplugin_obj* object, const std::string& name);
    Answer set(jsplugin_obj* object, const std::string& name, const Value& value);
    Answer call(jsplugin_obj* object, const std::string& name, const Values& arguments = {});
    Answer invoke(jsplugin_obj* thisObject, jsplugin_obj* function, const Values& arguments = {});
    // "Spotify.Session" and the like; stops the process when a step is no object.
    jsplugin_obj* find(jsplugin_obj* document, const std::string& path);

    void advance(unsigned milliseconds);

    // What reached the page, oldest first.
    std::vector<Call> calls;
    int callsOf(jsplugin_obj* function) const;

    bool refusesObjects = false;
    bool refusesFunctions = false;
    // Runs inside every function of the host's table, before it does its work.
    std::function<void()> duringCallbacks;
    // The order of what the plug-in did at the start and end of documents, for tests of that order.
    std::vector<std::string> lifecycle;

private:
    enum class Kind { Native, Foreign, Document, Function };  // the first two are plug-ins'
    struct Object : jsplugin_obj {
        explicit Object(Kind itsKind, jsplugin_obj* itsDocument = nullptr)
            : jsplugin_obj{nullptr}, kind(itsKind), document(itsDocument) {}

        Kind kind;
        jsplugin_obj* document;
        jsplugin_getter* getter = nullptr;
        jsplugin_setter* setter = nullptr;
        jsplugin_function* call = nullptr;
        jsplugin_destructor* destructor = nullptr;
        std::function<void(const Values&)> body;
        std::map<std::string, jsplugin_obj*> functions;  // read before and kept
        bool marked = false;
        std::vector<jsplugin_unload*> unloadListeners;
    };
    struct Poll {
        jsplugin_obj* document;
        unsigned interval;
        jsplugin_poll* poll;
        unsigned long due;
    };
    friend struct Value;

    static FakeHost* instance;

    static jsplugin_callbacks makeTable();
    static int create(bool refused, jsplugin_obj* context, Object model, jsplugin_obj** result);
    static Object& enter(const char* function, jsplugin_obj* object);
    void runHook();
    Object& at(const jsplugin_obj* object, const char* who) const;
    jsplugin_obj* make(Object model);
    void trace();  // marks in all documents what the plug-in keeps
    void collectIf(const std::function<bool(const Object&)>& isDoomed);

    std::map<const jsplugin_obj*, std::unique_ptr<Object>> objects;
    struct jsplugin_capabilities& plugin;
    std::vector<Poll> polls;
    unsigned long now = 0;
    bool tracing = false;
};

#endif
