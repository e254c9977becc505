// sonolet-replay: the plug-in alone, against a host and a library that do what a recording says.

#include "calls/Record.h"
#include "replay/Parts.h"
#include "tap/Imports.h"
#include "tap/Taps.h"
#include "tools/Arguments.h"

#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr char help[] = R"(usage: sonolet-replay FILE [options]

Runs the plug-in alone against the host, library and backend of a timeline that was recorded with
--replayable (SONOLET_TRACE_REPLAYABLE=1): the same calls in the same order, answers as recorded.
The first thing that the plug-in does otherwise is told, and where.

  --plugin FILE    the plug-in (default: ../lib/libSonolet.so.1.0 beside this program)
  --help           show this text
  --version        print the version

Exit codes: 0 no difference; 1 there is one; 2 an option is wrong, or FILE cannot be replayed.
)";

constexpr std::chrono::seconds longestStep{120};

using Entry = int(struct jsplugin_capabilities**, jsplugin_callbacks*);

struct Options {
    std::string file;
    std::string plugin;
};

std::unique_ptr<Recording> recording;
Replayer* theReplayer = nullptr;

Options parse(const std::vector<std::string>& words) {
    Options options;
    std::error_code ignored;
    options.plugin =
        (std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path().parent_path() /
         "lib/libSonolet.so.1.0")
            .string();
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--plugin") {
            if (++i == words.size()) {
                throw NotReplayable("--plugin takes a file");
            }
            options.plugin = std::filesystem::absolute(words[i]).string();
        } else if (!word.empty() && word[0] == '-') {
            throw NotReplayable("unknown option " + word + " (--help lists them)");
        } else if (!options.file.empty()) {
            throw NotReplayable("one file at a time: " + options.file + " and then " + word);
        } else {
            options.file = word;
        }
    }
    if (options.file.empty()) {
        throw NotReplayable("no file given (sonolet-replay FILE [options])");
    }
    return options;
}

std::string lastError() {
    const char* const reason = dlerror();  // NOLINT(concurrency-mt-unsafe): thread-local in glibc
    return reason != nullptr ? reason : "unknown reason";
}

void* answering(const std::string& symbol) {
    void* const function = replayedLibrary(symbol);
    return function != nullptr ? function : replayedDevice(symbol);
}

// The layer's functions stand before those of the recording, as they stood before the real ones.
void load(const std::string& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw NotReplayable(lastError());
    }
    auto* const entry = reinterpret_cast<Entry*>(dlsym(library, "jsplugin_capabilities"));
    if (entry == nullptr) {
        throw NotReplayable(file + ": no symbol jsplugin_capabilities");
    }
    Imports(library).replace([](const std::string& symbol, void*) -> void* {
        void* const answer = answering(symbol);
        for (const auto tap : {&libraryTap, &backendTap, &systemTap}) {
            if (void* const pass = answer != nullptr ? tap(symbol, answer) : nullptr) {
                return pass;
            }
        }
        return nullptr;
    });
    Call::watchers[0] = theReplayer;
    struct jsplugin_capabilities* offered = nullptr;
    if (entry(&offered, hostTap(replayedHost())) != 0 || offered == nullptr) {
        throw NotReplayable(file + ": refuses to be loaded");
    }
    setPlugin(pluginTap(offered));
}

// Says how far it is, and ends when the plug-in does not come back.
void oversee() {
    const bool isShown = isatty(STDERR_FILENO) != 0;
    std::size_t before = 0;
    auto since = std::chrono::steady_clock::now();
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::size_t made = replayer().turns.made();
        if (isShown) {
            std::fprintf(stderr, "\r%zu of %zu\r", made, recording->steps().size());
        }
        if (made != before) {
            before = made;
            since = std::chrono::steady_clock::now();
        } else if (std::chrono::steady_clock::now() - since > longestStep) {
            replayer().stuck();
        }
    }
}

void replay(const Options& options) {
    limits = Limits::none();
    recording = std::make_unique<Recording>(options.file);
    theReplayer = new Replayer(*recording, "sonolet-replay");  // never freed: threads go on
    addHostCalls();
    addLibraryCalls();
    addDeviceCalls();
    const std::vector<Turns::Line*> lines = replayer().turns.inOrder();
    replayer().enter(*lines.front());
    // Registered before the plug-in's exit handlers, so it comes after them.
    std::atexit([] { replayer().finish(); });
    load(options.plugin);
    std::thread(&oversee).detach();
    for (std::size_t i = 1; i < lines.size(); ++i) {
        std::thread([line = lines[i]] {
            replayer().enter(*line);
            replayer().drive();
        }).detach();
    }
    replayer().drive();
}

}  // namespace

Replayer& replayer() {
    return *theReplayer;
}

int main(int argc, char* argv[]) {
    try {
        const std::vector<std::string> words(argv + 1, argv + argc);
        if (tellsAbout("sonolet-replay", help, words)) {
            return 0;
        }
        replay(parse(separated(words, {"--plugin"})));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-replay: %s\n", error.what());
        std::fflush(nullptr);
        _exit(2);
    }
    return 0;
}
