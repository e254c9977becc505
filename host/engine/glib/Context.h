#ifndef SONOLET_HOST_ENGINE_GLIB_CONTEXT_H
#define SONOLET_HOST_ENGINE_GLIB_CONTEXT_H

#include <JavaScriptCore/JavaScript.h>
#include <jsc/jsc.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

// As kernel.js knows them; and JSType, as far as that goes.
enum class Kind : std::int32_t { Undefined, Null, Boolean, Number, String, Object, Other };

// One value. An object is known by its number, and its record lies where it lies, while it lives or
// is referred to weakly. An object that comes to the native half lives until that has returned to
// the script that called it, or to the main loop.
//
// What the native half makes in a call from script is made by kernel.js when that has returned, so
// that it takes no call of its own: until then it is only a number.
struct OpaqueJSValue {
    OpaqueJSContext* context = nullptr;
    Kind kind = Kind::Undefined;
    double number = 0;      // also a boolean, and an object's number
    std::string text = {};  // UTF-8; a lone surrogate as the three bytes it would take
    void* owner = nullptr;  // of an object: as JSObjectSetOwner() has said
    unsigned protections = 0;
    unsigned weaks = 0;
    std::uint64_t seenIn = 0;  // the last call from script that brought it
    // What it is yet to be, if anything: a function of the name `text`, or the front of a number.
    std::int32_t futureOf = 0;  // which of the callbacks; which number
    enum class Future : std::uint8_t { None, Function, Front } future = Future::None;
    bool hasDied = false;  // as far as the last sweep knows
};

// A document's context, over GLib's interface: kernel.js holds the objects, and here is where calls
// of it and from it become values. What a page does to the engine's functions changes nothing.
//
// Threads: the script thread. REQUIRES: no call into script is under way when it is deleted;
// functions that script still has then answer undefined. Errors: the constructor throws
// std::runtime_error when the engine lacks what kernel.js needs.
struct OpaqueJSContext final {
public:
    explicit OpaqueJSContext(JSCContext* scriptContext);
    ~OpaqueJSContext();

    OpaqueJSContext(const OpaqueJSContext&) = delete;
    OpaqueJSContext& operator=(const OpaqueJSContext&) = delete;

    // A value that lives as the interface's header says.
    OpaqueJSValue* make(Kind kind, double number = 0, std::string text = {});

    // Undefined, null or a boolean; lives as long as the context.
    const OpaqueJSValue* constant(Kind kind, bool boolean = false) const noexcept {
        return &constants[kind == Kind::Boolean ? (boolean ? 3 : 2)
                                                : static_cast<std::size_t>(kind)];
    }

    // Calls the function of that name in kernel.js. `exception` is set when it throws, and then the
    // result is null; so it is where the stack ends, or the memory.
    OpaqueJSValue* call(const char* operation,
                        const std::vector<JSValueRef>& values,
                        JSValueRef* exception = nullptr);

    OpaqueJSValue* evaluate(const std::string& script, JSValueRef* exception);
    OpaqueJSValue* makeFunction(const std::string& name, JSObjectCallAsFunctionCallback callback);
    OpaqueJSValue* makeFront(std::int32_t record);
    OpaqueJSValue* global();
    void* bytesOf(JSObjectRef buffer);

    // Finds out who has died, if the engine has collected since the last time.
    void sweep();

    // So much outside of the engine's heap hangs on what is new in it. The engine learns of it when
    // no script runs: what it takes for alive while one does, it would keep for long.
    void report(std::size_t bytes);

    // Counted; whoever protects first or last pays for a call.
    void protect(OpaqueJSValue& value);
    void unprotect(OpaqueJSValue& value);
    void dropWeak(OpaqueJSValue& value);
    bool isAlive(const OpaqueJSValue& value);

    unsigned references = 1;

private:
    // What the natives of kernel.js hold: the context, null once it is gone.
    using Link = std::shared_ptr<OpaqueJSContext*>;
    JSCValue* native(GCallback callback, GType result, std::vector<GType> parameters);
    static void callNative(const Link* link);
    static char* callForText(const Link* link);
    static char* callWithTexts(GPtrArray* texts, const Link* link);
    static JSCValue* textNative(const Link* link);
    static double numberNative(const Link* link);
    static void shareNative(JSCValue* newKinds, JSCValue* newNumbers, const Link* link);
    static void dropLink(gpointer link);
    // Of what report() was told; and the engine's next collection shows.
    void tell();

    // With the texts among its arguments, or null. Answers whether the result is a text that is to
    // come along; where it cannot, kernel.js asks for it.
    bool called(GPtrArray* texts, bool bringsText);
    OpaqueJSValue& newObject();
    OpaqueJSValue* makeLater(OpaqueJSValue::Future future, std::int32_t futureOf, std::string name);
    // Of a place in shared memory; `text` is its text, if it is one.
    OpaqueJSValue* take(std::size_t place, JSCValue* text);
    // A function that is yet to be may take a call here, if it is the first of its name.
    void put(std::size_t place, OpaqueJSValue& value);
    bool putResult(OpaqueJSValue& value, bool bringsText);
    JSCValue* makeText(const std::string& text);
    std::size_t shapeOf(const OpaqueJSValue& function);
    OpaqueJSValue* answered(JSCValue* text, JSValueRef* exception);
    JSCValue* function(const char* name);
    void forget(OpaqueJSValue& dead);
    // What kernel.js holds outside of calls from script goes once the main loop is reached.
    void letGoLater();

    JSCContext* const context;  // owned
    const Link link;
    JSCValue* kernel = nullptr;                            // owned
    std::unordered_map<std::string, JSCValue*> functions;  // owned; of the kernel
    JSCValue* shared[2] = {};                              // owned: the memory of the next two
    std::int32_t* kinds = nullptr;                         // the engine's, as many as `room`
    double* numbers = nullptr;                             // likewise
    std::size_t room = 0;

    const std::array<OpaqueJSValue, 4> constants;
    std::vector<JSObjectCallAsFunctionCallback> callbacks;
    std::deque<OpaqueJSValue> objects;  // by number; 0 is nobody's
    std::vector<std::size_t> freeNumbers;
    // What kernel.js keeps, by the hash of the text: what a plug-in answers repeats itself.
    std::array<std::string, 256> keptTexts;
    struct Shape {
        std::string name;
        std::int32_t callback = -1;
    };
    std::array<Shape, 256> shapes;
    std::string textOfResult;
    std::deque<OpaqueJSValue> passing;  // values that are none
    OpaqueJSValue* globalObject = nullptr;
    unsigned depth = 0;           // of calls from script
    std::uint64_t calls = 0;      // so many have been
    std::uint64_t innermost = 0;  // which of them is under way; 0: none
    unsigned calling = 0;         // calls of kernel.js under way
    guint lettingGo = 0;          // the main loop's source; 0: none waits
    std::size_t untold = 0;       // bytes
    // Since the last sweep; the engine says so on any of its threads, and after the context's end.
    const std::shared_ptr<std::atomic<bool>> hasCollected;
};

#endif
