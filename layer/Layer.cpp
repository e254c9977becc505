// libSonolet-layer.so.1.0: loaded by a browser in the plug-in's place. It loads the plug-in, passes
// everything on, and writes down or checks what passes, as its environment says. With nothing asked
// for it hands out what the plug-in hands out, and is not there any more.

#include "Settings.h"
#include "record/Recorder.h"
#include "tap/Call.h"
#include "tap/Imports.h"
#include "tap/Taps.h"
#include "validate/Validator.h"

#include "jsplugin.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

using Entry = int(struct jsplugin_capabilities**, jsplugin_callbacks*);

std::string lastError() {
    const char* const reason = dlerror();  // NOLINT(concurrency-mt-unsafe): thread-local in glibc
    return reason != nullptr ? reason : "unknown reason";
}

bool isSameFile(const std::string& one, const std::string& other) {
    char* const first = realpath(one.c_str(), nullptr);
    char* const second = realpath(other.c_str(), nullptr);
    const bool same = first != nullptr && second != nullptr && std::string(first) == second;
    std::free(first);
    std::free(second);
    return same;
}

// Made while the plug-in is loaded, so that its end comes after all exit handlers of the plug-in.
class Layer final {
public:
    Layer() : settings(Settings::fromEnvironment()) {
        if (!settings.traceFile.empty()) {
            recorder = new Recorder(settings);
            Call::watchers[1] = recorder;
        }
        if (settings.validates) {
            validator =
                new Validator(systemClock(), [this](const std::string& finding) { tell(finding); });
            Call::watchers[0] = validator;
        }
    }
    ~Layer() {
        // Threads that still call are passed on, unseen; they may be in the watchers even now.
        Call::watchers[0] = nullptr;
        Call::watchers[1] = nullptr;
        const bool hasFindings = validator != nullptr && validator->count() > 0;
        if (hasFindings) {
            tell(validator->summary());
        }
        if (recorder != nullptr) {
            recorder->finish();
        }
        if (hasFindings) {
            // The process is on its way out, and this is the one place where its code can change.
            std::fflush(nullptr);
            _exit(exitCode);
        }
    }
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    int capabilities(struct jsplugin_capabilities** result, jsplugin_callbacks* ofHost) {
        load();
        if (!settings.isWatching()) {
            return entry(result, ofHost);
        }
        if (validator != nullptr) {
            validator->check(ofHost);
        }
        struct jsplugin_capabilities* offered = nullptr;
        const int answer = entry(&offered, hostTap(ofHost));
        *result = pluginTap(offered);
        return answer;
    }

private:
    static constexpr int exitCode = 3;

    // Any thread.
    void tell(const std::string& finding) const {
        const std::string line = "libSonolet-layer: " + finding + '\n';
        std::FILE* const file = settings.findingsFile.empty()
                                    ? nullptr
                                    : std::fopen(settings.findingsFile.c_str(), "ae");
        std::fputs(line.c_str(), file != nullptr ? file : stderr);
        if (file != nullptr) {
            std::fclose(file);
        }
        if (recorder != nullptr) {
            recorder->mark(finding);
        }
    }

    void load() {
        if (entry != nullptr) {
            return;
        }
        Dl_info self = {};
        dladdr(reinterpret_cast<void*>(&jsplugin_capabilities), &self);
        const std::string file = settings.pluginBeside(self.dli_fname);
        if (isSameFile(file, self.dli_fname)) {
            throw std::runtime_error(file + " is the layer itself; SONOLET_LAYER_PLUGIN names the "
                                            "plug-in");
        }
        void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            throw std::runtime_error(lastError());
        }
        entry = reinterpret_cast<Entry*>(dlsym(library, "jsplugin_capabilities"));
        if (entry == nullptr) {
            throw std::runtime_error(file + ": no symbol jsplugin_capabilities");
        }
        if (settings.isWatching()) {
            Imports(library).replace([this](const std::string& symbol, void* function) {
                if (void* const tap = libraryTap(symbol, function)) {
                    return tap;
                }
                void* const tap = backendTap(symbol, function);
                return tap == nullptr && recorder != nullptr && settings.isReplayable
                           ? systemTap(symbol, function)
                           : tap;
            });
        }
    }

    const Settings settings;
    // Never freed: other threads may be in them to the end.
    Recorder* recorder = nullptr;
    Validator* validator = nullptr;
    Entry* entry = nullptr;
};

}  // namespace

int jsplugin_capabilities(struct jsplugin_capabilities** result,
                          struct jsplugin_callbacks* callbacks) {
    try {
        static Layer layer;
        return layer.capabilities(result, callbacks);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "libSonolet-layer: %s\n", error.what());
        return 1;
    }
}
