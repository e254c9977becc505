#include "engine/glib/Context.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <utility>

extern const char kernelScript[];  // kernel.js

namespace {

// Outside of calls from script so many values that are no objects are kept.
constexpr std::size_t mostPassing = 1024;

// The engine is told of no less; and of no more at once, which makes it collect by itself.
constexpr std::size_t worthTelling = std::size_t{1} << 20;
constexpr std::size_t mostTold = std::size_t{64} << 20;

// As kernel.js knows them.
constexpr std::int32_t thrown = 16;
constexpr std::int32_t outside = 1 << 30;

void release(JSCValue*& value) {
    if (value != nullptr) {
        g_object_unref(std::exchange(value, nullptr));
    }
}

}  // namespace

OpaqueJSContext::OpaqueJSContext(JSCContext* scriptContext)
    : context(JSC_CONTEXT(g_object_ref(scriptContext))),
      link(std::make_shared<OpaqueJSContext*>(this)),
      constants{OpaqueJSValue{this}, OpaqueJSValue{this, Kind::Null},
                OpaqueJSValue{this, Kind::Boolean, 0}, OpaqueJSValue{this, Kind::Boolean, 1}},
      hasCollected(std::make_shared<std::atomic<bool>>(false)) {
    objects.emplace_back();
    const auto evaluated = jsc_context_evaluate(context, kernelScript, -1);
    JSCValue* natives[] = {
        native(G_CALLBACK(callNative), G_TYPE_NONE, {}),
        native(G_CALLBACK(callForText), G_TYPE_STRING, {}),
        jsc_value_new_function_variadic(context, nullptr, G_CALLBACK(callWithTexts), new Link(link),
                                        dropLink, G_TYPE_STRING),
        native(G_CALLBACK(textNative), JSC_TYPE_VALUE, {}),
        native(G_CALLBACK(numberNative), G_TYPE_DOUBLE, {}),
        native(G_CALLBACK(shareNative), G_TYPE_NONE, {JSC_TYPE_VALUE, JSC_TYPE_VALUE}),
    };
    kernel = jsc_value_function_callv(evaluated, std::size(natives), natives);
    g_object_unref(evaluated);
    for (JSCValue*& each : natives) {
        release(each);
    }
    if (JSCException* const exception = jsc_context_get_exception(context)) {
        const std::string reason = jsc_exception_get_message(exception);
        jsc_context_clear_exception(context);
        throw std::runtime_error("the script engine lacks what kernel.js needs: " + reason);
    }
    tell();
}

OpaqueJSContext::~OpaqueJSContext() {
    *link = nullptr;
    if (lettingGo != 0) {
        g_source_remove(lettingGo);
    }
    JSCValue* nothing = jsc_value_function_callv(function("close"), 0, nullptr);
    release(nothing);
    for (auto& each : functions) {
        release(each.second);
    }
    for (JSCValue*& each : shared) {
        release(each);
    }
    release(kernel);
    g_object_unref(context);
}

// ---- Calls from script ----

void OpaqueJSContext::dropLink(gpointer link) {
    delete static_cast<Link*>(link);
}

JSCValue* OpaqueJSContext::native(GCallback callback, GType result, std::vector<GType> parameters) {
    return jsc_value_new_functionv(context, nullptr, callback, new Link(link), dropLink, result,
                                   static_cast<guint>(parameters.size()), parameters.data());
}

void OpaqueJSContext::callNative(const Link* link) {
    OpaqueJSContext* const self = **link;
    if (self != nullptr) {
        self->called(nullptr, false);
    }
}

char* OpaqueJSContext::callForText(const Link* link) {
    return callWithTexts(nullptr, link);
}

char* OpaqueJSContext::callWithTexts(GPtrArray* texts, const Link* link) {
    OpaqueJSContext* const self = **link;
    return self != nullptr && self->called(texts, true) ? g_strdup(self->textOfResult.c_str())
                                                        : nullptr;
}

JSCValue* OpaqueJSContext::textNative(const Link* link) {
    OpaqueJSContext* const self = **link;
    return self != nullptr ? self->makeText(self->textOfResult) : nullptr;
}

double OpaqueJSContext::numberNative(const Link* link) {
    OpaqueJSContext* const self = **link;
    return self != nullptr ? self->newObject().number : 0;
}

void OpaqueJSContext::shareNative(JSCValue* newKinds, JSCValue* newNumbers, const Link* link) {
    OpaqueJSContext* const self = **link;
    if (self == nullptr) {
        return;
    }
    release(self->shared[0]);
    release(self->shared[1]);
    self->shared[0] = JSC_VALUE(g_object_ref(newKinds));
    self->shared[1] = JSC_VALUE(g_object_ref(newNumbers));
    self->kinds = static_cast<std::int32_t*>(jsc_value_typed_array_get_data(newKinds, &self->room));
    self->numbers = static_cast<double*>(jsc_value_typed_array_get_data(newNumbers, &self->room));
}

bool OpaqueJSContext::called(GPtrArray* texts, bool bringsText) {
    const auto callback = callbacks[static_cast<std::size_t>(numbers[0])];
    const auto count = static_cast<std::size_t>(kinds[0]);
    const std::size_t before = passing.size();
    const std::uint64_t outer = std::exchange(innermost, ++calls);
    std::array<JSValueRef, 8> few;
    std::vector<JSValueRef> many(count > few.size() ? count : 0);
    JSValueRef* const values = many.empty() ? few.data() : many.data();
    for (std::size_t i = 0, next = 0; i < count; ++i) {
        const bool isText =
            texts != nullptr && kinds[i + 1] == static_cast<std::int32_t>(Kind::String);
        values[i] = take(i + 1, isText ? static_cast<JSCValue*>(g_ptr_array_index(texts, next++))
                                       : nullptr);
        const_cast<OpaqueJSValue*>(values[i])->seenIn = calls;
    }
    if (values[1]->kind == Kind::Undefined) {
        values[1] = global();
    }
    ++depth;
    JSValueRef exception = nullptr;
    const JSValueRef result =
        callback(this, const_cast<JSObjectRef>(values[0]), const_cast<JSObjectRef>(values[1]),
                 count - 2, values + 2, &exception);
    --depth;
    innermost = outer;
    bool isBrought = false;
    if (exception != nullptr) {
        isBrought = putResult(const_cast<OpaqueJSValue&>(*exception), bringsText);
        kinds[0] |= thrown;
    } else if (result != nullptr) {
        isBrought = putResult(const_cast<OpaqueJSValue&>(*result), bringsText);
    } else {
        kinds[0] = static_cast<std::int32_t>(Kind::Undefined);
    }
    while (passing.size() > before) {
        passing.pop_back();
    }
    return isBrought;
}

// ---- Values ----

OpaqueJSValue* OpaqueJSContext::make(Kind kind, double number, std::string text) {
    if (depth == 0 && passing.size() >= mostPassing) {
        passing.pop_front();
    }
    return &passing.emplace_back(OpaqueJSValue{this, kind, number, std::move(text)});
}

OpaqueJSValue& OpaqueJSContext::newObject() {
    std::size_t number = objects.size();
    if (freeNumbers.empty()) {
        objects.emplace_back();
    } else {
        number = freeNumbers.back();
        freeNumbers.pop_back();
    }
    return objects[number] = OpaqueJSValue{this, Kind::Object, static_cast<double>(number)};
}

OpaqueJSValue*
OpaqueJSContext::makeLater(OpaqueJSValue::Future future, std::int32_t futureOf, std::string name) {
    OpaqueJSValue& made = newObject();
    made.future = future;
    made.futureOf = futureOf;
    made.text = std::move(name);
    if (innermost == 0) {
        call("be", {&made});
    } else {
        made.seenIn = innermost;
    }
    return &made;
}

// ---- Calls of script ----

JSCValue* OpaqueJSContext::function(const char* name) {
    JSCValue*& known = functions[name];
    if (known == nullptr) {
        known = jsc_value_object_get_property(kernel, name);
    }
    return known;
}

OpaqueJSValue* OpaqueJSContext::answered(JSCValue* text, JSValueRef* exception) {
    OpaqueJSValue* answer = nullptr;
    bool hasThrown = false;
    if (JSCException* const failure = jsc_context_get_exception(context)) {
        // Outside of what kernel.js catches: at the end of the stack.
        answer = make(Kind::String, 0, jsc_exception_get_message(failure));
        jsc_context_clear_exception(context);
        hasThrown = true;
    } else {
        hasThrown = (kinds[0] & thrown) != 0;
        answer = take(0, text);
    }
    release(text);
    if (hasThrown && exception != nullptr) {
        *exception = answer;
    }
    return hasThrown ? nullptr : answer;
}

void OpaqueJSContext::letGoLater() {
    if (lettingGo != 0) {
        return;
    }
    const GSourceFunc letGo = [](gpointer self) -> gboolean {
        auto* const of = static_cast<OpaqueJSContext*>(self);
        of->lettingGo = 0;
        if (of->depth > 0 || of->calling > 0) {
            return G_SOURCE_REMOVE;  // a loop inside of a script: another one is asked for later
        }
        JSCValue* nothing = jsc_value_function_callv(of->function("letGo"), 0, nullptr);
        release(nothing);
        of->passing.clear();
        if (of->untold >= worthTelling) {
            of->tell();
        }
        return G_SOURCE_REMOVE;
    };
    lettingGo = g_idle_add_full(G_PRIORITY_DEFAULT, letGo, this, nullptr);
}

OpaqueJSValue* OpaqueJSContext::call(const char* operation,
                                     const std::vector<JSValueRef>& values,
                                     JSValueRef* exception) {
    if (depth == 0) {
        letGoLater();
    }
    if (values.size() >= room) {
        JSCValue* size = jsc_value_new_number(context, static_cast<double>(values.size() + 1));
        JSCValue* nothing = jsc_value_function_callv(function("makeRoom"), 1, &size);
        release(nothing);
        release(size);
    }
    // Before the first is put down: it may take a call of its own.
    for (const JSValueRef each : values) {
        if (each->future != OpaqueJSValue::Future::None && values.size() > 1) {
            call("be", {each});
        }
    }
    std::vector<JSCValue*> texts;
    for (std::size_t i = 0; i < values.size(); ++i) {
        put(i + 1, const_cast<OpaqueJSValue&>(*values[i]));
        if (values[i]->kind == Kind::String) {
            texts.push_back(makeText(values[i]->text));
        }
    }
    kinds[0] = static_cast<std::int32_t>(values.size()) | (depth == 0 ? outside : 0);
    ++calling;
    JSCValue* const text = jsc_value_function_callv(function(operation),
                                                    static_cast<guint>(texts.size()), texts.data());
    --calling;
    for (JSCValue*& each : texts) {
        release(each);
    }
    return answered(text, exception);
}

OpaqueJSValue* OpaqueJSContext::evaluate(const std::string& script, JSValueRef* exception) {
    if (depth == 0) {
        letGoLater();
    }
    JSCValue* result =
        jsc_context_evaluate(context, script.data(), static_cast<gssize>(script.size()));
    JSCException* const failure = jsc_context_get_exception(context);
    if (failure != nullptr) {
        OpaqueJSValue* const message = make(Kind::String, 0, jsc_exception_get_message(failure));
        const JSValueRef error = call("error", {message});
        jsc_context_clear_exception(context);
        release(result);
        if (exception != nullptr) {
            *exception = error;
        }
        return nullptr;
    }
    JSCValue* const text = jsc_value_function_callv(function("accept"), 1, &result);
    release(result);
    return answered(text, exception);
}

OpaqueJSValue* OpaqueJSContext::makeFunction(const std::string& name,
                                             JSObjectCallAsFunctionCallback callback) {
    auto known = std::find(callbacks.begin(), callbacks.end(), callback);
    if (known == callbacks.end()) {
        known = callbacks.insert(callbacks.end(), callback);
    }
    return makeLater(OpaqueJSValue::Future::Function,
                     static_cast<std::int32_t>(known - callbacks.begin()), name);
}

OpaqueJSValue* OpaqueJSContext::makeFront(std::int32_t record) {
    return makeLater(OpaqueJSValue::Future::Front, record, {});
}

OpaqueJSValue* OpaqueJSContext::global() {
    if (globalObject == nullptr) {
        globalObject = call("global", {});
        ++globalObject->weaks;
    }
    return globalObject;
}

void* OpaqueJSContext::bytesOf(JSObjectRef buffer) {
    JSCValue* number = jsc_value_new_number(context, buffer->number);
    JSCValue* bytes = jsc_value_function_callv(function("bytes"), 1, &number);
    gsize size = 0;
    void* const data = jsc_value_typed_array_get_data(bytes, &size);
    release(bytes);
    release(number);
    return data;
}

// ---- Lives ----

void OpaqueJSContext::protect(OpaqueJSValue& value) {
    if (value.kind == Kind::Object && value.protections++ == 0) {
        call("protect", {&value});
    }
}

void OpaqueJSContext::unprotect(OpaqueJSValue& value) {
    if (value.kind == Kind::Object && --value.protections == 0) {
        call("unprotect", {&value});
    }
}

void OpaqueJSContext::dropWeak(OpaqueJSValue& value) {
    --value.weaks;
    forget(value);
}

bool OpaqueJSContext::isAlive(const OpaqueJSValue& value) {
    // Whoever calls has it on the stack.
    if ((innermost != 0 && value.seenIn == innermost) ||
        value.future != OpaqueJSValue::Future::None) {
        return true;
    }
    const OpaqueJSValue* const answer = value.hasDied ? nullptr : call("isAlive", {&value});
    return answer != nullptr && answer->number != 0;
}

void OpaqueJSContext::report(std::size_t bytes) {
    untold += bytes;
    if (untold >= worthTelling) {
        letGoLater();
    }
}

void OpaqueJSContext::tell() {
    // By an array that nobody holds. Nobody reads it, either, so it has no bytes.
    using Flag = std::shared_ptr<std::atomic<bool>>;
    const auto collected = [](gpointer flag) {
        **static_cast<Flag*>(flag) = true;
        delete static_cast<Flag*>(flag);
    };
    const std::size_t size = std::clamp(std::exchange(untold, 0), std::size_t{1}, mostTold);
    JSCValue* array =
        jsc_value_new_array_buffer(context, nullptr, size, collected, new Flag(hasCollected));
    release(array);
}

void OpaqueJSContext::sweep() {
    if (!hasCollected->exchange(false)) {
        return;
    }
    tell();
    JSCValue* nothing = jsc_value_function_callv(function("sweep"), 0, nullptr);
    release(nothing);
    for (std::int32_t i = 1; i <= kinds[0]; ++i) {
        OpaqueJSValue& dead = objects[static_cast<std::size_t>(numbers[i])];
        dead.hasDied = true;
        forget(dead);
    }
}

void OpaqueJSContext::forget(OpaqueJSValue& dead) {
    if (dead.hasDied && dead.weaks == 0) {
        dead.text.clear();
        freeNumbers.push_back(static_cast<std::size_t>(dead.number));
    }
}
