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
#include <vector>

namespace {

jsplugin_callbacks* host = nullptr;
ProbeCounts counts = {};
int accessAnswer = 1;
std::string protocolAsked;
std::set<jsplugin_obj*> live;
bool destructedTwice = false;

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

int answerString(jsplugin_value* result, int code, std::string text) {
    scratch = std::move(text);
    result->type = JSP_TYPE_STRING;
    result->u.string = scratch.c_str();
    return code;
}

int answerNumber(jsplugin_value* result, int code, double number) {
    result->type = JSP_TYPE_NUMBER;
    result->u.number = number;
    return code;
}

int answerObject(jsplugin_value* result, int code, jsplugin_obj* object) {
    // A page's object has nothing private.
    result->type = object->plugin_private != nullptr ? JSP_TYPE_NATIVE_OBJECT : JSP_TYPE_OBJECT;
    result->u.object = object;
    return code;
}

int getter(jsplugin_obj* object, const char* name, jsplugin_value* result);
int setter(jsplugin_obj* object, const char* name, jsplugin_value* value);
int call(jsplugin_obj* self,
         jsplugin_obj* function,
         int argc,
         jsplugin_value* argv,
         jsplugin_value* result);

void destructor(jsplugin_obj* object) {
    if (live.erase(object) == 0) {
        destructedTwice = true;
        return;
    }
    if (object == remembered) {
        remembered = nullptr;
    }
    ++counts.destructed;
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

jsplugin_obj* created(int answer, jsplugin_obj* object, const std::string& name) {
    if (answer != JSP_CREATE_OK) {
        return nullptr;
    }
    object->plugin_private = new Item{name, {}, "first", false, {}};
    live.insert(object);
    ++counts.created;
    return object;
}

jsplugin_obj* makeObject(jsplugin_obj* ctx) {
    jsplugin_obj* object = nullptr;
    const int answer = host->create_object(ctx, getter, setter, destructor, trace, &object);
    return created(answer, object, "");
}

jsplugin_obj* makeFunction(jsplugin_obj* ctx, const std::string& name) {
    jsplugin_obj* object = nullptr;
    const int answer =
        host->create_function(ctx, nullptr, nullptr, call, destructor, nullptr, &object);
    return created(answer, object, name);
}

// The values that a read of a name gives, each with the code that it comes with.
int valueOf(const std::string& name, jsplugin_value* result) {
    if (name == "undefinedValue") {
        result->type = JSP_TYPE_UNDEFINED;
        return JSP_GET_VALUE;
    }
    if (name == "nullValue") {
        result->type = JSP_TYPE_NULL;
        return JSP_GET_VALUE;
    }
    if (name == "yes" || name == "no") {
        result->type = JSP_TYPE_BOOLEAN;
        result->u.boolean = name == "yes" ? 1 : 0;
        return JSP_GET_VALUE;
    }
    if (name == "nan") {
        // Not the pattern that an engine makes.
        return answerNumber(result, JSP_GET_VALUE, -std::nan("12345"));
    }
    if (name == "brokenText") {
        return answerString(result, JSP_GET_VALUE, "a\xff\xc3(z\xed\xa0\x80");
    }
    if (name == "nullText") {
        result->type = JSP_TYPE_STRING;
        result->u.string = nullptr;
        return JSP_GET_VALUE;
    }
    if (name == "strayObject") {
        static jsplugin_obj stray = {};
        result->type = JSP_TYPE_NATIVE_OBJECT;
        result->u.object = &stray;
        return JSP_GET_VALUE;
    }
    if (name == "inits") {
        return answerNumber(result, JSP_GET_VALUE, counts.inits);
    }
    if (name == "live") {
        return answerNumber(result, JSP_GET_VALUE, counts.created - counts.destructed);
    }
    if (name == "music") {
        const char* const folder =
            std::getenv("SONOLET_MUSIC");  // NOLINT(concurrency-mt-unsafe): nobody sets it now
        return answerString(result, JSP_GET_VALUE, folder != nullptr ? folder : "");
    }
    if (name == "garbageType") {
        result->type = 99;
        return JSP_GET_VALUE;
    }
    if (name == "date") {
        const int code = answerString(result, JSP_GET_VALUE, "new Date(86400000)");
        result->type = JSP_TYPE_EXPRESSION;
        return code;
    }
    if (name == "brokenExpression") {
        const int code = answerString(result, JSP_GET_VALUE, "null.member");
        result->type = JSP_TYPE_EXPRESSION;
        return code;
    }
    return JSP_GET_NO_PROPERTY;
}

const std::set<std::string> functionNames = {
    "again",   "describe", "echo",     "fire",      "hold",     "listen",   "make",    "missing",
    "nothing", "readsOf",  "remember", "startPoll", "throwing", "unlisten", "callWith"};

int getter(jsplugin_obj* object, const char* name, jsplugin_value* result) {
    ++counts.reads;
    Item& item = itemOf(object);
    ++item.reads[name];
    if (functionNames.count(name) != 0) {
        jsplugin_obj* const function = makeFunction(object, name);
        return function != nullptr ? answerObject(result, JSP_GET_VALUE_CACHE, function)
                                   : answerString(result, JSP_GET_EXCEPTION, "refused");
    }
    if (std::strcmp(name, "text") == 0) {
        return answerString(result, JSP_GET_VALUE, item.text);
    }
    if (std::strcmp(name, "cachedText") == 0) {
        return answerString(result, JSP_GET_VALUE_CACHE, item.text);
    }
    if (std::strcmp(name, "constant") == 0) {
        return answerNumber(result, JSP_GET_VALUE_CACHE, 42);
    }
    if (std::strcmp(name, "nothingThere") == 0) {
        return JSP_GET_NO_VALUE;
    }
    if (item.isList && name[0] >= '0' && name[0] <= '2' && name[1] == '\0') {
        return answerNumber(result, JSP_GET_VALUE_CACHE, name[0] - '0');
    }
    if (item.isList && std::strcmp(name, "length") == 0) {
        return answerNumber(result, JSP_GET_VALUE, 3);
    }
    if (std::strcmp(name, "list") == 0) {
        jsplugin_obj* const list = makeObject(object);
        itemOf(list).isList = true;
        return answerObject(result, JSP_GET_VALUE_CACHE, list);
    }
    if (std::strcmp(name, "failing") == 0) {
        return answerString(result, JSP_GET_EXCEPTION, "failing cannot be read");
    }
    return valueOf(name, result);
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
    std::string text = std::to_string(value.type);
    switch (value.type) {
    case JSP_TYPE_STRING:
        return text + ':' + value.u.string;
    case JSP_TYPE_NUMBER:
        return text + ':' + std::to_string(value.u.number);
    case JSP_TYPE_BOOLEAN:
        return text + ':' + std::to_string(value.u.boolean);
    case JSP_TYPE_OBJECT:
        return text + (value.u.object->plugin_private == nullptr ? ":page" : ":private");
    default:
        return text;
    }
}

int poll(const jsplugin_obj* ctx) {
    ++counts.polls;
    const std::vector<jsplugin_obj*> now = listeners;
    for (jsplugin_obj* const listener : now) {
        host->call_function(const_cast<jsplugin_obj*>(ctx), nullptr, listener, 0, nullptr, nullptr,
                            nullptr);
    }
    return --pollsLeft > 0 ? 1 : 0;
}

int call(jsplugin_obj* self,
         jsplugin_obj* function,
         int argc,
         jsplugin_value* argv,
         jsplugin_value* result) {
    const std::string name = itemOf(function).name;
    if (name == "missing") {
        return JSP_CALL_NO_FUNCTION;
    }
    if (name == "nothing") {
        return JSP_CALL_NO_VALUE;
    }
    if (name == "throwing") {
        return answerString(result, JSP_CALL_EXCEPTION, "thrown by the plug-in");
    }
    if (name == "describe") {
        // `this` first, then the arguments.
        std::string text = self == nullptr                   ? "none"
                           : self->plugin_private == nullptr ? "page"
                                                             : "native";
        for (int i = 0; i < argc; ++i) {
            text += ' ' + described(argv[i]);
        }
        return answerString(result, JSP_CALL_VALUE, text);
    }
    if (name == "make") {
        jsplugin_obj* const object = makeObject(function);
        return object != nullptr ? answerObject(result, JSP_CALL_VALUE, object)
                                 : answerString(result, JSP_CALL_EXCEPTION, "refused");
    }
    if (name == "unlisten") {
        listeners.clear();
        return JSP_CALL_NO_VALUE;
    }
    if (name == "again") {
        if (remembered == nullptr) {
            result->type = JSP_TYPE_NULL;
            return JSP_CALL_VALUE;
        }
        return answerObject(result, JSP_CALL_VALUE, remembered);
    }
    if (name == "fire") {
        int failed = 0;
        const std::vector<jsplugin_obj*> now = listeners;
        for (jsplugin_obj* const listener : now) {
            failed +=
                host->call_function(document, self, listener, argc, argv, nullptr, nullptr) == 0
                    ? 0
                    : 1;
        }
        return answerNumber(result, JSP_CALL_VALUE, failed);
    }
    if (argc == 0) {
        return answerString(result, JSP_CALL_EXCEPTION, "Not enough arguments");
    }
    if (name == "echo") {
        *result = argv[0];
        if (argv[0].type == JSP_TYPE_STRING) {
            return answerString(result, JSP_CALL_VALUE, argv[0].u.string);
        }
        return JSP_CALL_VALUE;
    }
    if (name == "readsOf") {
        return answerNumber(result, JSP_CALL_VALUE, itemOf(self).reads[argv[0].u.string]);
    }
    if (name == "listen") {
        // Answers how many different ones there are, by address.
        listeners.push_back(argv[0].u.object);
        return answerNumber(
            result, JSP_CALL_VALUE,
            static_cast<double>(std::set<void*>(listeners.begin(), listeners.end()).size()));
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
        return answerNumber(result, JSP_CALL_VALUE, host->add_poll_function(function, 100, poll));
    }
    if (name == "callWith") {
        // More arguments than a host would keep in a small place of its own.
        std::vector<jsplugin_value> many(40);
        std::vector<std::string> texts;
        texts.reserve(many.size());
        for (int i = 0; i < 40; ++i) {
            texts.push_back("argument " + std::to_string(i));
        }
        for (std::size_t i = 0; i < many.size(); ++i) {
            many[i].type = JSP_TYPE_STRING;
            many[i].u.string = texts[i].c_str();
        }
        host->call_function(document, nullptr, argv[0].u.object, 40, many.data(), nullptr, nullptr);
        return JSP_CALL_NO_VALUE;
    }
    return JSP_CALL_NO_FUNCTION;
}

int globalGetter(jsplugin_obj* ctx, const char* name, jsplugin_value* result) {
    ++counts.globalReads;
    if (std::strcmp(name, "Probe") == 0) {
        return answerObject(result, JSP_GET_VALUE_CACHE, makeObject(ctx));
    }
    if (std::strcmp(name, "ProbeFailing") == 0) {
        return answerString(result, JSP_GET_EXCEPTION, "no such probe");
    }
    return JSP_GET_NO_VALUE;
}

void unload(jsplugin_obj*) {
    ++counts.unloads;
    listeners.clear();
}

void init(jsplugin_obj* ctx) {
    ++counts.inits;
    document = ctx;
    host->add_unload_listener(ctx, unload);
}

void destroy(jsplugin_obj*) {
    ++counts.destroys;
}

int allowAccess(const char* protocol, const char*, int) {
    protocolAsked = protocol;
    return accessAnswer;
}

// With PROBE_REPORT set, the counts go out at exit: for tests that see the process from outside.
struct Reporter {
    ~Reporter() {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it now
        if (std::getenv("PROBE_REPORT") != nullptr) {
            std::fprintf(stderr, "probe: inits %d unloads %d created %s destructed %d polls %d\n",
                         counts.inits, counts.unloads,
                         counts.created > 0 ? std::to_string(counts.created).c_str() : "none",
                         counts.destructed, counts.polls);
        }
    }
} reporter;

}  // namespace

ProbeCounts probeCounts() {
    return counts;
}

void probeAllowAccess(int answer) {
    accessAnswer = answer;
}

const char* probeProtocol() {
    return protocolAsked.c_str();
}

int probeIsClean() {
    return live.empty() && !destructedTwice ? 1 : 0;
}

int jsplugin_capabilities(struct jsplugin_capabilities** result, jsplugin_callbacks* callbacks) {
    static char probeName[] = "Probe";
    static char failingName[] = "ProbeFailing";
    static char emptyName[] = "ProbeEmpty";
    static char* names[] = {probeName, failingName, emptyName, nullptr};
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
