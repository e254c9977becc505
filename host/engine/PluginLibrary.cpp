#include "engine/PluginLibrary.h"

#include "engine/CallbackTable.h"

#include <dlfcn.h>

#include <stdexcept>

PluginLibrary::PluginLibrary(const std::string& path) {
    // With a slash, or the loader would look for a bare name among the system's libraries.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();  // NOLINT(concurrency-mt-unsafe): thread-local in glibc
        const std::string text = reason != nullptr ? reason : "unknown reason";
        throw std::runtime_error(text.find(file) != std::string::npos ? text : file + ": " + text);
    }
    using Entry = int(struct jsplugin_capabilities**, jsplugin_callbacks*);
    auto* entry = reinterpret_cast<Entry*>(dlsym(library, "jsplugin_capabilities"));
    if (entry == nullptr) {
        throw std::runtime_error(path + ": no symbol jsplugin_capabilities");
    }
    if (const int answer = entry(&offered, callbackTable()); answer != 0) {
        throw std::runtime_error(path + ": jsplugin_capabilities answered " +
                                 std::to_string(answer) + ", not 0");
    }
    if (offered == nullptr) {
        throw std::runtime_error(path + ": jsplugin_capabilities gave no record");
    }
}
