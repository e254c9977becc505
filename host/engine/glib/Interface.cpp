// The engine's C interface, as far as JavaScriptCore/JavaScript.h declares it.

#include "engine/WeakObject.h"
#include "engine/glib/Context.h"

#include <algorithm>
#include <cstring>
#include <utility>

struct OpaqueJSString {
    std::string text;           // as OpaqueJSValue's
    std::u16string characters;  // the same, made when it is asked for
    unsigned references = 1;
};

namespace {

OpaqueJSContext& of(JSContextRef context) {
    return const_cast<OpaqueJSContext&>(*context);
}

OpaqueJSValue& of(JSValueRef value) {
    return const_cast<OpaqueJSValue&>(*value);
}

JSObjectRef objectOrNull(OpaqueJSValue* value) {
    return value != nullptr && value->kind == Kind::Object ? value : nullptr;
}

JSStringRef makeString(std::string text) {
    return new OpaqueJSString{std::move(text), {}, 1};
}

// UTF-16 of UTF-8 that may have surrogates as characters of their own.
std::u16string utf16(const std::string& text) {
    std::u16string units;
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::size_t length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        char32_t point = length == 1 ? byte : byte & (0xFFU >> (length + 1));
        for (std::size_t more = 1; more < length && i + more < text.size(); ++more) {
            point = point << 6 | (static_cast<unsigned char>(text[i + more]) & 0x3FU);
        }
        i += length;
        if (point >= 0x10000) {
            units += static_cast<char16_t>(0xD7C0 + (point >> 10));
            point = 0xDC00 + (point & 0x3FF);
        }
        units += static_cast<char16_t>(point);
    }
    return units;
}

const std::u16string& charactersOf(JSStringRef string) {
    if (string->characters.empty()) {
        string->characters = utf16(string->text);
    }
    return string->characters;
}

// The values of a call, behind those before it.
std::vector<JSValueRef>
together(std::vector<JSValueRef> first, std::size_t count, const JSValueRef arguments[]) {
    first.insert(first.end(), arguments, arguments + count);
    return first;
}

}  // namespace

// ---- Contexts ----

JSContextGroupRef JSContextGetGroup(JSContextRef) {
    return nullptr;
}

JSObjectRef JSContextGetGlobalObject(JSContextRef context) {
    return of(context).global();
}

JSGlobalContextRef JSGlobalContextRetain(JSGlobalContextRef context) {
    ++context->references;
    return context;
}

void JSGlobalContextRelease(JSGlobalContextRef context) {
    if (--context->references == 0) {
        delete context;
    }
}

JSValueRef JSEvaluateScript(JSContextRef context,
                            JSStringRef script,
                            JSObjectRef,
                            JSStringRef,
                            int,
                            JSValueRef* exception) {
    return of(context).evaluate(script->text, exception);
}

void JSReportExtraMemoryCost(JSContextRef context, size_t size) {
    of(context).report(size);
}

// GLib's interface has no way to it.
void JSSynchronousGarbageCollectForDebugging(JSContextRef) {}

// ---- Strings ----

JSStringRef JSStringCreateWithUTF8CString(const char* string) {
    return makeString(string);
}

JSStringRef JSStringRetain(JSStringRef string) {
    ++string->references;
    return string;
}

void JSStringRelease(JSStringRef string) {
    if (--string->references == 0) {
        delete string;
    }
}

size_t JSStringGetLength(JSStringRef string) {
    return charactersOf(string).size();
}

const JSChar* JSStringGetCharactersPtr(JSStringRef string) {
    return reinterpret_cast<const JSChar*>(charactersOf(string).data());
}

size_t JSStringGetUTF8CString(JSStringRef string, char* buffer, size_t bufferSize) {
    const std::size_t size = std::min(string->text.size(), bufferSize - 1);
    std::memcpy(buffer, string->text.data(), size);
    buffer[size] = '\0';
    return size + 1;
}

// ---- Values ----

JSType JSValueGetType(JSContextRef, JSValueRef value) {
    return static_cast<JSType>(value->kind);
}

bool JSValueIsObject(JSContextRef, JSValueRef value) {
    return value->kind == Kind::Object;
}

JSValueRef JSValueMakeUndefined(JSContextRef context) {
    return of(context).constant(Kind::Undefined);
}

JSValueRef JSValueMakeNull(JSContextRef context) {
    return of(context).constant(Kind::Null);
}

JSValueRef JSValueMakeBoolean(JSContextRef context, bool boolean) {
    return of(context).constant(Kind::Boolean, boolean);
}

JSValueRef JSValueMakeNumber(JSContextRef context, double number) {
    return of(context).make(Kind::Number, number);
}

JSValueRef JSValueMakeString(JSContextRef context, JSStringRef string) {
    return of(context).make(Kind::String, 0, string->text);
}

bool JSValueToBoolean(JSContextRef, JSValueRef value) {
    return value->number != 0;
}

double JSValueToNumber(JSContextRef, JSValueRef value, JSValueRef*) {
    return value->number;
}

JSStringRef JSValueToStringCopy(JSContextRef context, JSValueRef value, JSValueRef* exception) {
    const JSValueRef text =
        value->kind == Kind::String ? value : of(context).call("text", {value}, exception);
    return text != nullptr ? makeString(text->text) : nullptr;
}

JSObjectRef JSValueToObject(JSContextRef, JSValueRef value, JSValueRef*) {
    return objectOrNull(&of(value));
}

void JSValueProtect(JSContextRef context, JSValueRef value) {
    of(context).protect(of(value));
}

void JSValueUnprotect(JSContextRef context, JSValueRef value) {
    of(context).unprotect(of(value));
}

JSWeakRef JSWeakCreate(JSContextGroupRef, JSObjectRef object) {
    ++object->weaks;
    return reinterpret_cast<JSWeakRef>(object);
}

JSObjectRef JSWeakGetObject(JSWeakRef weak) {
    auto* const object = reinterpret_cast<JSObjectRef>(weak);
    return object->context->isAlive(*object) ? object : nullptr;
}

bool JSWeakHasDied(JSWeakRef weak) {
    return reinterpret_cast<JSObjectRef>(weak)->hasDied;
}

void JSWeakSweep(JSContextRef context) {
    of(context).sweep();
}

void JSWeakRelease(JSContextGroupRef, JSWeakRef weak) {
    auto* const object = reinterpret_cast<JSObjectRef>(weak);
    object->context->dropWeak(*object);
}

// ---- Objects ----

JSObjectRef JSObjectMake(JSContextRef context, JSClassRef, void*) {
    return objectOrNull(of(context).call("object", {}));
}

void JSObjectSetOwner(JSObjectRef object, void* owner) {
    object->owner = owner;
}

void* JSObjectGetOwner(JSObjectRef object) {
    return object->owner;
}

void JSObjectFrontsBy(JSContextRef context, JSObjectRef maker) {
    of(context).call("frontsBy", {maker});
}

JSObjectRef JSObjectMakeFront(JSContextRef context, int number) {
    return of(context).makeFront(number);
}

JSObjectRef JSObjectMakeFunctionWithCallback(JSContextRef context,
                                             JSStringRef name,
                                             JSObjectCallAsFunctionCallback callAsFunction) {
    return of(context).makeFunction(name != nullptr ? name->text : "", callAsFunction);
}

JSObjectRef JSObjectMakeArray(JSContextRef context,
                              size_t argumentCount,
                              const JSValueRef arguments[],
                              JSValueRef* exception) {
    return of(context).call("array", together({}, argumentCount, arguments), exception);
}

JSObjectRef JSObjectMakeError(JSContextRef context,
                              size_t argumentCount,
                              const JSValueRef arguments[],
                              JSValueRef* exception) {
    return of(context).call("error", together({}, argumentCount, arguments), exception);
}

bool JSObjectIsFunction(JSContextRef context, JSObjectRef object) {
    const OpaqueJSValue* const answer = of(context).call("isFunction", {object});
    return answer != nullptr && answer->number != 0;
}

JSValueRef JSObjectGetProperty(JSContextRef context,
                               JSObjectRef object,
                               JSStringRef propertyName,
                               JSValueRef* exception) {
    return of(context).call("get", {object, JSValueMakeString(context, propertyName)}, exception);
}

JSValueRef JSObjectGetPropertyAtIndex(JSContextRef context,
                                      JSObjectRef object,
                                      unsigned propertyIndex,
                                      JSValueRef* exception) {
    return of(context).call("get", {object, JSValueMakeNumber(context, propertyIndex)}, exception);
}

void JSObjectSetProperty(JSContextRef context,
                         JSObjectRef object,
                         JSStringRef propertyName,
                         JSValueRef value,
                         JSPropertyAttributes,
                         JSValueRef* exception) {
    of(context).call("set", {object, JSValueMakeString(context, propertyName), value}, exception);
}

JSValueRef JSObjectCallAsFunction(JSContextRef context,
                                  JSObjectRef object,
                                  JSObjectRef thisObject,
                                  size_t argumentCount,
                                  const JSValueRef arguments[],
                                  JSValueRef* exception) {
    const JSValueRef on = thisObject != nullptr ? thisObject : JSValueMakeUndefined(context);
    return of(context).call("call", together({object, on}, argumentCount, arguments), exception);
}

JSObjectRef JSObjectCallAsConstructor(JSContextRef context,
                                      JSObjectRef object,
                                      size_t argumentCount,
                                      const JSValueRef arguments[],
                                      JSValueRef* exception) {
    return of(context).call("construct", together({object}, argumentCount, arguments), exception);
}

void* JSObjectGetArrayBufferBytesPtr(JSContextRef context, JSObjectRef object, JSValueRef*) {
    return of(context).bytesOf(object);
}
