// A plug-in that answers every code and type, counts what it is asked, and holds what it is told
// to.
#include "Probe.h"

#include "jsplugin.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

jsplugin_callbacks* host = nullptr;
ProbeState state;
std::set<jsplugin_obj*> live;

// What hangs in plugin_private of an object or function of the probe.
struct Item {
    std::string name;  // of a function
    std::map<std::string, int> reads;
    std::string text = "first";
    bool isList = false;              // of the numbers 0, 1 and 2
    std::vector<jsplugin_obj*> held;  // marked by the item's own trace
};

// Held by the document: marked by its trace.
std::vector<jsplugin_obj*> listeners;
// Handed out again without being marked.
jsplugin_obj* remembered = nullptr;
jsplugin_obj* document = nullptr;
int pollsLeft = 0;
std::string scratch;

Item& itemOf(jsplugin_obj* object) {
    return *static_cast<Item*>(object->plugin_private);
}

jsplugin_value ofType(int type) {
    jsplugin_value value = {};
    value.type = type;
    return value;
}

jsplugin_value boolean(bool truth) {
    jsplugin_value value = ofType(JSP_TYPE_BOOLEAN);
    value.u.boolean = truth ? 1 : 0;
    return value;
}

jsplugin_value number(double amount) {
    jsplugin_value value = ofType(JSP_TYPE_NUMBER);
    value.u.number = amount;
    return value;
}

jsplugin_value text(const char* characters, int type = JSP_TYPE_STRING) {
    jsplugin_value value = ofType(type);
    value.u.string = characters;
    return value;
}

// A page's object has nothing private.
jsplugin_value objectValue(jsplugin_obj* object) {
    jsplugin_value value =
        ofType(object->plugin_private != nullptr ? JSP_TYPE_NATIVE_OBJECT : JSP_TYPE_OBJECT);
    value.u.object = object;
    return value;
}

jsplugin_value strayObject() {
    static jsplugin_obj stray = {};
    jsplugin_value value = ofType(JSP_TYPE_NATIVE_OBJECT);
    value.u.object = &stray;
    return value;
}

int answer(jsplugin_value* result, int code, const jsplugin_value& value) {
    *result = value;
    return code;
}

int answerString(jsplugin_value* result, int code, std::string characters) {
    scratch = std::move(characters);
    return answer(result, code, text(scratch.c_str()));
}

int getter(jsplugin_obj* object, const char* nameText, jsplugin_value* result);
int setter(jsplugin_obj* object, const char* name, jsplugin_value* value);
int call(jsplugin_obj* self,
         jsplugin_obj* function,
         int argc,
         jsplugin_value* argv,
         jsplugin_value* result);

void destructor(jsplugin_obj* object) {
    if (live.erase(object) == 0) {
        state.clean = false;
        return;
    }
    if (object == remembered) {
        remembered = nullptr;
    }
    ++state.destructed;
    delete static_cast<Item*>(object->plugin_private);
    object->plugin_private = nullptr;
}

void trace(jsplugin_obj* object) {
    for (jsplugin_obj* const held : itemOf(object).held) {
        host->gc_mark(held);
    }
}

void documentTrace(jsplugin_obj*) {
    for (jsplugin_obj* const listener : listeners) {
        host->gc_mark(listener);
    }
}

// Aborts when the host refuses: no test goes on from there.
jsplugin_obj* created(int code, jsplugin_obj* object, const std::string& name) {
    if (code != JSP_CREATE_OK) {
        std::abort();
    }
    object->plugin_private = new Item{name, {}, "first", false, {}};
    live.insert(object);
    ++state.created;
    return object;
}

jsplugin_obj* makeObject(jsplugin_obj* ctx) {
    jsplugin_obj* object = nullptr;
    const int code = host->create_object(ctx, getter, setter, destructor, trace, &object);
    return created(code, object, "");
}

jsplugin_obj* makeFunction(jsplugin_obj* ctx, const std::string& name) {
    jsplugin_obj* object = nullptr;
    // The one that has names as objects have.
    const bool hasNames = name == "named";
    const int code =
        host->create_function(ctx, hasNames ? getter : nullptr, hasNames ? setter : nullptr, call,
                              destructor, hasNames ? trace : nullptr, &object);
    return created(code, object, name);
}

using Answer = std::pair<int, jsplugin_value>;

// What reads of these names and calls of these functions give, at all times and on any object.
const std::map<std::string, Answer> fixedValues = {
    {"undefinedValue", {JSP_GET_VALUE, ofType(JSP_TYPE_UNDEFINED)}},
    {"nullValue", {JSP_GET_VALUE, ofType(JSP_TYPE_NULL)}},
    {"garbageType", {JSP_GET_VALUE, ofType(99)}},
    {"nothingThere", {JSP_GET_NO_VALUE, ofType(JSP_TYPE_UNDEFINED)}},
    {"yes", {JSP_GET_VALUE, boolean(true)}},
    {"no", {JSP_GET_VALUE, boolean(false)}},
    {"nan", {JSP_GET_VALUE, number(-std::nan("12345"))}},  // not the pattern that an engine makes
    {"constant", {JSP_GET_VALUE_CACHE, number(42)}},
    {"brokenText", {JSP_GET_VALUE, text("a\xff\xc3(z\xed\xa0\x80")}},
    {"nullText", {JSP_GET_VALUE, text(nullptr)}},
    {"strayObject", {JSP_GET_VALUE, strayObject()}},
    {"failing", {JSP_GET_EXCEPTION, text("failing cannot be read")}},
    {"date", {JSP_GET_VALUE, text("new Date(86400000)", JSP_TYPE_EXPRESSION)}},
    {"brokenExpression", {JSP_GET_VALUE, text("null.member", JSP_TYPE_EXPRESSION)}},
};
const std::map<std::string, Answer> fixedCalls = {
    {"missing", {JSP_CALL_NO_FUNCTION, ofType(JSP_TYPE_UNDEFINED)}},
    {"nothing", {JSP_CALL_NO_VALUE, ofType(JSP_TYPE_UNDEFINED)}},
    {"throwing", {JSP_CALL_EXCEPTION, text("thrown by the plug-in")}},
};
const std::set<std::string> functionNames = {
    "again", "describe", "echo",    "fire",     "hold",      "listen",   "make",     "missing",
    "named", "nothing",  "readsOf", "remember", "startPoll", "throwing", "unlisten", "callWith"};

int getter(jsplugin_obj* object, const char* nameText, jsplugin_value* result) {
    const std::string name = nameText;
    Item& item = itemOf(object);
    ++item.reads[name];
    if (functionNames.count(name) != 0) {
        return answer(result, JSP_GET_VALUE_CACHE, objectValue(makeFunction(object, name)));
    }
    if (const auto fixed = fixedValues.find(name); fixed != fixedValues.end()) {
        return answer(result, fixed->second.first, fixed->second.second);
    }
    if (name == "text" || name == "cachedText") {
        return answerString(result, name == "text" ? JSP_GET_VALUE : JSP_GET_VALUE_CACHE,
                            item.text);
    }
    if (name == "inits") {
        return answer(result, JSP_GET_VALUE, number(state.inits));
    }
    if (name == "live") {
        return answer(result, JSP_GET_VALUE, number(state.created - state.destructed));
    }
    if (name == "music") {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it now
        const char* const folder = std::getenv("SONOLET_MUSIC");
        return answerString(result, JSP_GET_VALUE, folder != nullptr ? folder : "");
    }
    if (item.isList && name == "length") {
        return answer(result, JSP_GET_VALUE, number(3));
    }
    if (item.isList && (name == "0" || name == "1" || name == "2")) {
        return answer(result, JSP_GET_VALUE_CACHE, number(name[0] - '0'));
    }
    if (name == "list") {
        jsplugin_obj* const list = makeObject(object);
        itemOf(list).isList = true;
        return answer(result, JSP_GET_VALUE_CACHE, objectValue(list));
    }
    return JSP_GET_NO_PROPERTY;
}

int setter(jsplugin_obj* object, const char* name, jsplugin_value* value) {
    if (std::strcmp(name, "text") == 0 || std::strcmp(name, "cachedText") == 0) {
        if (value->type != JSP_TYPE_STRING) {
            return answerString(value, JSP_PUT_EXCEPTION, "text takes a string");
        }
        itemOf(object).text = value->u.string;
        return JSP_PUT_OK;
    }
    if (std::strcmp(name, "expando") == 0) {
        return JSP_GET_NO_PROPERTY;
    }
    return JSP_PUT_READ_ONLY;
}

// "3:text", "1", ... : type and content, as the plug-in got them.
std::string described(const jsplugin_value& value) {
    std::string type = std::to_string(value.type);
    switch (value.type) {
    case JSP_TYPE_STRING:
        return type + ':' + value.u.string;
    case JSP_TYPE_NUMBER:
        return type + ':' + std::to_string(value.u.number);
    case JSP_TYPE_BOOLEAN:
        return type + ':' + std::to_string(value.u.boolean);
    case JSP_TYPE_OBJECT:
        return type + (value.u.object->plugin_private == nullptr ? ":page" : ":private");
    default:
        return type;
    }
}

// Answers how many calls failed.
int callListeners(jsplugin_obj* ctx, jsplugin_obj* self, int argc, jsplugin_value* argv) {
    int failed = 0;
    const std::vector<jsplugin_obj*> now = listeners;
    for (jsplugin_obj* const listener : now) {
        failed +=
            host->call_function(ctx, self, listener, argc, argv, nullptr, nullptr) == 0 ? 0 : 1;
    }
    return failed;
}

int poll(const jsplugin_obj* ctx) {
    ++state.polls;
    callListeners(const_cast<jsplugin_obj*>(ctx), nullptr, 0, nullptr);
    return --pollsLeft > 0 ? 1 : 0;
}

int call(jsplugin_obj* self,
         jsplugin_obj* function,
         int argc,
         jsplugin_value* argv,
         jsplugin_value* result) {
    const std::string name = itemOf(function).name;
    if (const auto fixed = fixedCalls.find(name); fixed != fixedCalls.end()) {
        return answer(result, fixed->second.first, fixed->second.second);
    }
    if (name == "describe") {
        std::string all = self == nullptr                   ? "none"
                          : self->plugin_private == nullptr ? "page"
                                                            : "native";
        for (int i = 0; i < argc; ++i) {
            all += ' ' + described(argv[i]);
        }
        return answerString(result, JSP_CALL_VALUE, all);
    }
    if (name == "make") {
        return answer(result, JSP_CALL_VALUE, objectValue(makeObject(function)));
    }
    if (name == "unlisten") {
        listeners.clear();
        return JSP_CALL_NO_VALUE;
    }
    if (name == "again") {
        return answer(result, JSP_CALL_VALUE,
                      remembered != nullptr ? objectValue(remembered) : ofType(JSP_TYPE_NULL));
    }
    if (name == "fire") {
        return answer(result, JSP_CALL_VALUE, number(callListeners(document, self, argc, argv)));
    }
    if (argc == 0) {
        return answerString(result, JSP_CALL_EXCEPTION, "Not enough arguments");
    }
    if (name == "echo" || name == "named") {
        return argv[0].type == JSP_TYPE_STRING
                   ? answerString(result, JSP_CALL_VALUE, argv[0].u.string)
                   : answer(result, JSP_CALL_VALUE, argv[0]);
    }
    if (name == "readsOf") {
        return answer(result, JSP_CALL_VALUE, number(itemOf(self).reads[argv[0].u.string]));
    }
    if (name == "listen") {
        // Answers how many different ones there are, by address.
        listeners.push_back(argv[0].u.object);
        const std::set<jsplugin_obj*> different(listeners.begin(), listeners.end());
        return answer(result, JSP_CALL_VALUE, number(static_cast<double>(different.size())));
    }
    if (name == "hold") {
        itemOf(self).held.push_back(argv[0].u.object);
        return JSP_CALL_NO_VALUE;
    }
    if (name == "remember") {
        remembered = argv[0].u.object;
        return JSP_CALL_NO_VALUE;
    }
    if (name == "startPoll") {
        pollsLeft = static_cast<int>(argv[0].u.number);
        return answer(result, JSP_CALL_VALUE, number(host->add_poll_function(function, 100, poll)));
    }
    if (name == "callWith") {
        // More arguments than a host would keep in a small place of its own.
        std::vector<std::string> texts(40);
        std::vector<jsplugin_value> many;
        for (std::string& each : texts) {
            each = "argument " + std::to_string(many.size());
            many.push_back(text(each.c_str()));
        }
        host->call_function(document, nullptr, argv[0].u.object, 40, many.data(), nullptr, nullptr);
        return JSP_CALL_NO_VALUE;
    }
    return JSP_CALL_NO_FUNCTION;
}

int globalGetter(jsplugin_obj* ctx, const char* name, jsplugin_value* result) {
    ++state.globalReads;
    if (std::strcmp(name, "Probe") == 0) {
        return answer(result, JSP_GET_VALUE_CACHE, objectValue(makeObject(ctx)));
    }
    if (std::strcmp(name, "ProbeFailing") == 0) {
        return answerString(result, JSP_GET_EXCEPTION, "no such probe");
    }
    return JSP_GET_NO_VALUE;
}

void unload(jsplugin_obj*) {
    ++state.unloads;
    listeners.clear();
}

void init(jsplugin_obj* ctx) {
    ++state.inits;
    document = ctx;
    host->add_unload_listener(ctx, unload);
}

void destroy(jsplugin_obj*) {
    ++state.destroys;
}

// A page of the host "refused.localhost" is never let in.
int allowAccess(const char* protocol, const char* hostName, int) {
    static std::string asked;
    asked = protocol;
    state.protocolAsked = asked.c_str();
    return state.allowsAccess && std::strcmp(hostName, "refused.localhost") != 0 ? 1 : 0;
}

// With PROBE_REPORT set, the counts go out at exit: for tests that see the process from outside.
struct Reporter {
    ~Reporter() {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it now
        if (std::getenv("PROBE_REPORT") != nullptr) {
            std::fprintf(stderr, "probe: inits %d unloads %d created %s destructed %d polls %d\n",
                         state.inits, state.unloads,
                         state.created > 0 ? std::to_string(state.created).c_str() : "none",
                         state.destructed, state.polls);
        }
    }
} reporter;

}  // namespace

ProbeState* probeState() {
    return &state;
}

int jsplugin_capabilities(struct jsplugin_capabilities** result, jsplugin_callbacks* callbacks) {
    static char globals[][13] = {"Probe", "ProbeFailing", "ProbeEmpty"};
    static char* names[] = {globals[0], globals[1], globals[2], nullptr};
    static char* types[] = {nullptr};
    static struct jsplugin_capabilities offered = {};
    offered.global_names = names;
    offered.object_types = types;
    offered.global_getter = globalGetter;
    offered.init = init;
    offered.destroy = destroy;
    offered.allow_access = allowAccess;
    offered.gc_trace = documentTrace;
    *result = &offered;
    host = callbacks;
    return 0;
}
