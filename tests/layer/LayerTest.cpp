// The layer by itself: what it stands before, and that it is gone when nobody watches.

#include "Command.h"
#include "tap/Functions.h"

#include "jsplugin.h"
#include "uva.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <set>

namespace {

using Entry = int(struct jsplugin_capabilities**, jsplugin_callbacks*);

Entry* entryOf(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    return library != nullptr ? reinterpret_cast<Entry*>(dlsym(library, "jsplugin_capabilities"))
                              : nullptr;
}

std::set<std::string> found(const std::string& text, const char* expression) {
    const std::regex wanted(expression);
    std::set<std::string> names;
    for (auto at = std::sregex_iterator(text.begin(), text.end(), wanted);
         at != std::sregex_iterator(); ++at) {
        names.insert((*at)[1]);
    }
    return names;
}

// A function or a callback that a header gets and the table does not would pass unseen.
TEST(TheTable, HasEveryFunctionOfTheHeaders) {
    std::set<std::string> table;
    for (const FunctionInfo& function : functionTable) {
        table.insert(function.name);
    }
    std::string header = contentsOf(PLATFORM_DIR "/libspotify/api.h");
    header = std::regex_replace(header, std::regex("//[^\n]*"), "");
    std::set<std::string> declared = found(header, R"(\b(sp_[a-z_]+)\()");
    EXPECT_GT(declared.size(), 150U);
    declared.merge(found(header, R"(\(\*([a-z_]+)\)\()"));
    declared.merge(found(contentsOf(PLATFORM_DIR "/jsplugin.h"), R"(int \(\*([a-z_]+)\)\()"));
    declared.merge(found(contentsOf(PLATFORM_DIR "/uva.h"),
                         R"(virtual (?:int|void|bool|UVABackend\*) ([A-Za-z]+)\()"));
    for (const std::string& name : declared) {
        EXPECT_EQ(table.count(name), 1U) << name << " is not in layer/tap/Functions.h";
    }
}

TEST(TheLayer, HandsOutThePluginsOwnRecordWhenNobodyWatches) {
    Entry* const layer = entryOf(LAYER);
    ASSERT_NE(layer, nullptr);
    struct jsplugin_capabilities* offered = nullptr;
    jsplugin_callbacks callbacks = {};
    ASSERT_EQ(layer(&offered, &callbacks), 0);
    struct jsplugin_capabilities* own = nullptr;
    ASSERT_EQ(entryOf(PLUGIN)(&own, &callbacks), 0);
    EXPECT_EQ(offered, own);
}

// One line that says what is wrong, and the host's exit code for a plug-in that does not load.
TEST(TheLayer, SaysWhatItCannotDo) {
    const struct {
        std::map<std::string, std::string> environment;
        const char* line;
    } cases[] = {
        {{{"SONOLET_LAYER_PLUGIN", "/nowhere/libSonolet.so.1.0"}},
         "/nowhere/libSonolet.so.1.0: cannot open"},
        {{{"SONOLET_LAYER_PLUGIN", LAYER}}, "is the layer itself"},
        {{{"SONOLET_TRACE", "/nowhere/trace.json"}},
         "SONOLET_TRACE: /nowhere/trace.json: No such file"},
        {{{"SONOLET_TRACE", "/dev/null"}, {"SONOLET_TRACE_SIZE", "12M"}},
         "SONOLET_TRACE_SIZE takes a number of MiB from 1 to 4095, not \"12M\""},
    };
    for (const auto& [environment, line] : cases) {
        const Outcome outcome =
            run({BIN_DIR "/sonolet-host", "--plugin", LAYER, PAGES_DIR "/../../pages/hello.js"},
                environment);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.errors.find(line), std::string::npos) << outcome.errors;
    }
}

}  // namespace

// The plug-in looks for the media backend in its process.
UVABackend* UVAFactory::requestBackend(UVABackend::UVABackendType, UVAClient*) {
    return nullptr;
}
void UVAFactory::releaseBackend(UVABackend*) {}
