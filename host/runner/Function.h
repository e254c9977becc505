#ifndef SONOLET_HOST_RUNNER_FUNCTION_H
#define SONOLET_HOST_RUNNER_FUNCTION_H

#include <JavaScriptCore/JavaScript.h>

#include <functional>
#include <string>

// Functions of the host for scripts.
namespace function {

// What a body throws to throw a value in script.
struct Thrown {
    JSValueRef value;
};

// Throws std::exception to throw an Error of its text in script.
using Body = std::function<JSValueRef(JSContextRef context, size_t argc, const JSValueRef argv[])>;

// A function object that runs `body`; it owns it, and lives as long as script can reach it.
JSObjectRef make(JSContextRef context, const std::string& name, Body body);

// Makes it a property of `object`.
void define(JSContextRef context, JSObjectRef object, const std::string& name, Body body);

void setProperty(JSContextRef context,
                 JSObjectRef object,
                 const std::string& name,
                 JSValueRef value);

}  // namespace function

#endif
