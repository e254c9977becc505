#include "engine/glib/Context.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

extern const char kernelScript[];  // kernel.js

namespace {

// Outside of calls from script so many values that are no objects are kept.
constexpr std::size_t mostPassing = 1024;

// As kernel.js knows them.
constexpr std::int32_t thrown = 16;
constexpr std::int32_t outside = 1 << 30;

std::string textOf(JSCValue* value) {
    // As bytes: there may be a NUL in it.
    GBytes* const bytes = jsc_value_to_string_as_bytes(value);
    if (bytes == nullptr) {
        return {};
    }
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    std::string text(data != nullptr ? data : "", size);
    g_bytes_unref(bytes);
    return text;
}

void release(JSCValue*& value) {
    if (value != nullptr) {
        g_object_unref(std::exchange(value, nullptr));
    }
}

}  // namespace

OpaqueJSContext::OpaqueJSContext(JSCContext* scriptContext)
    : context(JSC_CONTEXT(g_object_ref(scriptContext))),
      link(std::make_shared<OpaqueJSContext*>(this)), constants{
                                                          OpaqueJSValue{*this},
                                                          OpaqueJSValue{*this, Kind::Null},
                                                          OpaqueJSValue{*this, Kind::Boolean, 0},
                                                          OpaqueJSValue{*this, Kind::Boolean, 1}} {
    const auto evaluated = jsc_context_evaluate(context, kernelScript, -1);
    JSCValue* natives[] = {
        native(G_CALLBACK(callNative), JSC_TYPE_VALUE, {}),
        jsc_value_new_function_variadic(context, nullptr, G_CALLBACK(callWithTexts), new Link(link),
                                        dropLink, JSC_TYPE_VALUE),
        native(G_CALLBACK(diedNative), G_TYPE_NONE, {G_TYPE_DOUBLE}),
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

JSCValue* OpaqueJSContext::callNative(const Link* link) {
    return callWithTexts(nullptr, link);
}

JSCValue* OpaqueJSContext::callWithTexts(GPtrArray* texts, const Link* link) {
    OpaqueJSContext* const self = **link;
    return self != nullptr ? self->called(texts) : nullptr;
}

void OpaqueJSContext::diedNative(double number, const Link* link) {
    OpaqueJSContext* const self = **link;
    if (self == nullptr) {
        return;
    }
    if (const auto found = self->objects.find(static_cast<std::uint64_t>(number));
        found != self->objects.end()) {
        found->second->hasDied = true;
        self->forget(*found->second);
    }
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

JSCValue* OpaqueJSContext::called(GPtrArray* texts) {
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
    ++depth;
    JSValueRef exception = nullptr;
    const JSValueRef result =
        callback(this, const_cast<JSObjectRef>(values[0]), const_cast<JSObjectRef>(values[1]),
                 count - 2, values + 2, &exception);
    --depth;
    innermost = outer;
    JSCValue* text = nullptr;
    if (exception != nullptr) {
        text = put(0, *exception);
        kinds[0] |= thrown;
    } else if (result != nullptr) {
        text = put(0, *result);
    } else {
        kinds[0] = static_cast<std::int32_t>(Kind::Undefined);
    }
    while (passing.size() > before) {
        passing.pop_back();
    }
    return text;
}

// ---- Values ----

OpaqueJSValue* OpaqueJSContext::make(Kind kind, double number, std::string text) {
    if (depth == 0 && passing.size() >= mostPassing) {
        passing.pop_front();
    }
    return &passing.emplace_back(OpaqueJSValue{*this, kind, number, std::move(text)});
}

OpaqueJSValue* OpaqueJSContext::object(double number) {
    std::unique_ptr<OpaqueJSValue>& known = objects[static_cast<std::uint64_t>(number)];
    if (known == nullptr) {
        known = std::make_unique<OpaqueJSValue>(OpaqueJSValue{*this, Kind::Object, number});
    }
    return known.get();
}

OpaqueJSValue* OpaqueJSContext::take(std::size_t place, JSCValue* text) {
    const auto kind = static_cast<Kind>(kinds[place] & ~thrown);
    return kind == Kind::Object   ? object(numbers[place])
           : kind == Kind::String ? make(kind, 0, textOf(text))
                                  : make(kind, numbers[place]);
}

JSCValue* OpaqueJSContext::put(std::size_t place, const OpaqueJSValue& value) {
    kinds[place] = static_cast<std::int32_t>(value.kind);
    numbers[place] = value.number;
    if (value.kind != Kind::String) {
        return nullptr;
    }
    GBytes* const bytes = g_bytes_new(value.text.data(), value.text.size());
    JSCValue* const text = jsc_value_new_string_from_bytes(context, bytes);
    g_bytes_unref(bytes);
    return text;
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
    if (depth > 0 || lettingGo != 0) {
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
        return G_SOURCE_REMOVE;
    };
    lettingGo = g_idle_add_full(G_PRIORITY_DEFAULT, letGo, this, nullptr);
}

OpaqueJSValue* OpaqueJSContext::call(const char* operation,
                                     const std::vector<JSValueRef>& values,
                                     JSValueRef* exception) {
    letGoLater();
    if (values.size() >= room) {
        JSCValue* size = jsc_value_new_number(context, static_cast<double>(values.size() + 1));
        JSCValue* nothing = jsc_value_function_callv(function("makeRoom"), 1, &size);
        release(nothing);
        release(size);
    }
    std::vector<JSCValue*> texts;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (JSCValue* const text = put(i + 1, *values[i])) {
            texts.push_back(text);
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
    letGoLater();
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
    return call("makeFunction",
                {make(Kind::String, 0, name),
                 make(Kind::Number, static_cast<double>(known - callbacks.begin()))});
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
    if (innermost != 0 && value.seenIn == innermost) {
        return true;
    }
    const OpaqueJSValue* const answer = value.hasDied ? nullptr : call("isAlive", {&value});
    return answer != nullptr && answer->number != 0;
}

void OpaqueJSContext::forget(OpaqueJSValue& dead) {
    if (dead.hasDied && dead.weaks == 0) {
        objects.erase(static_cast<std::uint64_t>(dead.number));
    }
}
