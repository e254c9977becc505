#ifndef SONOLET_HOST_ENGINE_GLIB_JAVASCRIPTCORE_H
#define SONOLET_HOST_ENGINE_GLIB_JAVASCRIPTCORE_H

#include <stddef.h>

// The part of the engine's C interface that host/engine uses, for browsers whose engine exports
// only GLib's: Context.h says how it is done over that one. Names, arguments and meaning are the
// engine's own; what differs is told here.
//
// A value lives until the call from script in which it was made or came has returned; outside of
// such calls until the main loop is reached, of a thousand and more the latest. Threads: the script
// thread.

// NOLINTBEGIN: the engine's names
#ifdef __cplusplus
extern "C" {
#endif

typedef const struct OpaqueJSContextGroup* JSContextGroupRef;
typedef const struct OpaqueJSContext* JSContextRef;
typedef struct OpaqueJSContext* JSGlobalContextRef;
typedef struct OpaqueJSString* JSStringRef;
typedef const struct OpaqueJSValue* JSValueRef;
typedef struct OpaqueJSValue* JSObjectRef;
typedef struct OpaqueJSClass* JSClassRef;
typedef unsigned short JSChar;
typedef unsigned JSPropertyAttributes;

typedef enum {
    kJSTypeUndefined,
    kJSTypeNull,
    kJSTypeBoolean,
    kJSTypeNumber,
    kJSTypeString,
    kJSTypeObject,
    kJSTypeSymbol,
} JSType;

typedef JSValueRef (*JSObjectCallAsFunctionCallback)(JSContextRef context,
                                                     JSObjectRef function,
                                                     JSObjectRef thisObject,
                                                     size_t argumentCount,
                                                     const JSValueRef arguments[],
                                                     JSValueRef* exception);

JSContextGroupRef JSContextGetGroup(JSContextRef context);
JSObjectRef JSContextGetGlobalObject(JSContextRef context);
JSGlobalContextRef JSGlobalContextRetain(JSGlobalContextRef context);
void JSGlobalContextRelease(JSGlobalContextRef context);

JSValueRef JSEvaluateScript(JSContextRef context,
                            JSStringRef script,
                            JSObjectRef thisObject,
                            JSStringRef sourceURL,
                            int startingLineNumber,
                            JSValueRef* exception);

JSStringRef JSStringCreateWithUTF8CString(const char* string);
JSStringRef JSStringRetain(JSStringRef string);
void JSStringRelease(JSStringRef string);
size_t JSStringGetLength(JSStringRef string);
const JSChar* JSStringGetCharactersPtr(JSStringRef string);
size_t JSStringGetUTF8CString(JSStringRef string, char* buffer, size_t bufferSize);

JSType JSValueGetType(JSContextRef context, JSValueRef value);
bool JSValueIsObject(JSContextRef context, JSValueRef value);
JSValueRef JSValueMakeUndefined(JSContextRef context);
JSValueRef JSValueMakeNull(JSContextRef context);
JSValueRef JSValueMakeBoolean(JSContextRef context, bool boolean);
JSValueRef JSValueMakeNumber(JSContextRef context, double number);
JSValueRef JSValueMakeString(JSContextRef context, JSStringRef string);
bool JSValueToBoolean(JSContextRef context, JSValueRef value);
double JSValueToNumber(JSContextRef context, JSValueRef value, JSValueRef* exception);
JSStringRef JSValueToStringCopy(JSContextRef context, JSValueRef value, JSValueRef* exception);
JSObjectRef JSValueToObject(JSContextRef context, JSValueRef value, JSValueRef* exception);
// Of objects alone; other values need none.
void JSValueProtect(JSContextRef context, JSValueRef value);
void JSValueUnprotect(JSContextRef context, JSValueRef value);

// A plain object; there are no classes.
JSObjectRef JSObjectMake(JSContextRef context, JSClassRef jsClass, void* data);
JSObjectRef JSObjectMakeFunctionWithCallback(JSContextRef context,
                                             JSStringRef name,
                                             JSObjectCallAsFunctionCallback callAsFunction);
JSObjectRef JSObjectMakeArray(JSContextRef context,
                              size_t argumentCount,
                              const JSValueRef arguments[],
                              JSValueRef* exception);
JSObjectRef JSObjectMakeError(JSContextRef context,
                              size_t argumentCount,
                              const JSValueRef arguments[],
                              JSValueRef* exception);
bool JSObjectIsFunction(JSContextRef context, JSObjectRef object);
JSValueRef JSObjectGetProperty(JSContextRef context,
                               JSObjectRef object,
                               JSStringRef propertyName,
                               JSValueRef* exception);
JSValueRef JSObjectGetPropertyAtIndex(JSContextRef context,
                                      JSObjectRef object,
                                      unsigned propertyIndex,
                                      JSValueRef* exception);
void JSObjectSetProperty(JSContextRef context,
                         JSObjectRef object,
                         JSStringRef propertyName,
                         JSValueRef value,
                         JSPropertyAttributes attributes,
                         JSValueRef* exception);
JSValueRef JSObjectCallAsFunction(JSContextRef context,
                                  JSObjectRef object,
                                  JSObjectRef thisObject,
                                  size_t argumentCount,
                                  const JSValueRef arguments[],
                                  JSValueRef* exception);
JSObjectRef JSObjectCallAsConstructor(JSContextRef context,
                                      JSObjectRef object,
                                      size_t argumentCount,
                                      const JSValueRef arguments[],
                                      JSValueRef* exception);
void* JSObjectGetArrayBufferBytesPtr(JSContextRef context,
                                     JSObjectRef object,
                                     JSValueRef* exception);

#ifdef __cplusplus
}
#endif
// NOLINTEND

#endif
