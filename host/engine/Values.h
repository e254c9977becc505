#ifndef SONOLET_HOST_ENGINE_VALUES_H
#define SONOLET_HOST_ENGINE_VALUES_H

#include "jsplugin.h"

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <string>
#include <vector>

class ObjectStore;

// Script values as the plug-in gets them; valid as long as this object, or until the plug-in
// overwrites one. Objects get their record, and with it their address, here; texts are UTF-8, and
// what the plug-in cannot be told (a symbol) is undefined. Script thread, on the stack.
class PluginArguments final {
public:
    PluginArguments(ObjectStore& objects,
                    JSContextRef context,
                    size_t argc,
                    const JSValueRef argv[]);

    PluginArguments(const PluginArguments&) = delete;
    PluginArguments& operator=(const PluginArguments&) = delete;

    // Null for no arguments, as the plug-in expects.
    jsplugin_value* data() noexcept { return values; }

private:
    // Nearly every call has few arguments, which then take no memory of their own.
    std::array<jsplugin_value, 4> few;
    std::vector<jsplugin_value> many;
    jsplugin_value* values;
    std::vector<std::string> strings;  // has room for all before the first: values point at them
};

// The text of an exception answer.
std::string messageOf(const jsplugin_value& value);

#endif
