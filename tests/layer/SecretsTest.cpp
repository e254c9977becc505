// What a timeline hides where nothing says that it is a secret but where it came from.

#include "../fakes/Folder.h"
#include "Command.h"
#include "World.h"
#include "record/Recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A world whose calls are written to a file.
class Recorded {
public:
    explicit Recorded(bool isReplayable = false) {
        Settings settings;
        settings.traceFile = folder.path("trace.json");
        settings.traceBytes = 64U << 20U;
        settings.isReplayable = isReplayable;
        recorder = std::make_unique<Recorder>(settings);
        Call::watchers[1] = recorder.get();
        world.open();
        world.login();
    }
    ~Recorded() { Call::watchers[1] = nullptr; }
    Recorded(const Recorded&) = delete;
    Recorded& operator=(const Recorded&) = delete;

    // As script reads it of the object: its name is known from then on.
    void read(const char* name, jsplugin_obj& function) {
        inside = [&] { world.createFunction(function); };
        slot.type = JSP_TYPE_NATIVE_OBJECT;
        slot.u.object = &function;
        code = JSP_GET_VALUE;
        jsplugin_value result = {};
        given.getter(&world.object, name, &result);
        invoke = given.call;
    }
    void call(jsplugin_obj& function, std::initializer_list<const char*> texts) {
        std::vector<jsplugin_value> arguments;
        for (const char* const text : texts) {
            arguments.push_back({JSP_TYPE_STRING, {nullptr}});
            arguments.back().u.string = text;
        }
        jsplugin_value result = {};
        code = JSP_CALL_NO_VALUE;
        invoke(&world.object, &function, static_cast<int>(texts.size()), arguments.data(), &result);
    }
    void set(const char* name, const char* text) {
        jsplugin_value value = {JSP_TYPE_STRING, {nullptr}};
        value.u.string = text;
        code = JSP_PUT_OK;
        given.setter(&world.object, name, &value);
    }
    void get(const char* name, const char* answer) {
        slot.type = JSP_TYPE_STRING;
        slot.u.string = answer;
        code = JSP_GET_VALUE;
        jsplugin_value result = {};
        given.getter(&world.object, name, &result);
    }
    void blob(const std::string& text) const {
        world.process(
            [&] { given.session->credentials_blob_updated(world.session, text.c_str()); });
    }

    std::string text() {
        recorder->finish();
        return contentsOf(folder.path("trace.json"));
    }

    World world;
    jsplugin_obj named = {};
    jsplugin_obj login = {};
    jsplugin_obj nameless = {};

private:
    const Folder folder;
    std::unique_ptr<Recorder> recorder;
    jsplugin_function* invoke = nullptr;
};

TEST(Secrets, AreHiddenByWhatTheyAreHandedTo) {
    Recorded recorded;
    recorded.read("say", recorded.named);
    recorded.read("login", recorded.login);
    recorded.world.createFunction(recorded.nameless);
    recorded.call(recorded.named, {"told 1", "told 2"});
    recorded.call(recorded.login, {"told 3", "hidden 1", "hidden 2", "hidden 3"});
    // One whose name was in calls that are lost may be login.
    recorded.call(recorded.nameless, {"hidden 4", "hidden 5"});
    recorded.call(recorded.world.other, {"hidden 6"});
    for (const char* const name :
         {"proxyPassword", "PASSWORD", "clientSecret", "credentialsBlob", "credentials"}) {
        recorded.set(name, "hidden 7");
        recorded.get(name, "hidden 8");
    }
    recorded.set("proxy", "told 4");
    recorded.get("proxy", "told 5");
    recorded.set("onCredentialsBlobUpdated", "told 6");
    const std::string text = recorded.text();
    for (int i = 1; i <= 6; ++i) {
        EXPECT_THAT(text, HasSubstr("\"told " + std::to_string(i) + '"'));
    }
    EXPECT_EQ(text.find("hidden"), std::string::npos) << text;
}

// Each login brings a blob: the latest 256 are known wherever they pass, as far as a timeline has
// texts. A recording that is replayed knows all, each by its number.
TEST(Secrets, OfTheLibraryAreKnownAgainUpToTheLatest256) {
    for (const bool isReplayable : {false, true}) {
        Recorded recorded(isReplayable);
        recorded.read("say", recorded.named);
        const auto blobOf = [](int number) {
            return "blob-" + std::to_string(number) + '-' + std::string(120, 'x');
        };
        for (int i = 0; i < 300; ++i) {
            recorded.blob(blobOf(i));
        }
        for (const int i : {0, 43, 44, 299}) {
            recorded.call(recorded.named, {blobOf(i).c_str()});
            recorded.get("text", blobOf(i).c_str());
        }
        const std::string text = recorded.text();
        const auto countOf = [&](const std::string& part) {
            std::size_t count = 0;
            for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
                ++count;
            }
            return count;
        };
        const std::size_t told = isReplayable ? 0 : 2;
        EXPECT_EQ(countOf("blob-0-"), told);
        EXPECT_EQ(countOf("blob-43-"), told);
        EXPECT_EQ(countOf("blob-"), 2 * told);
        EXPECT_EQ(countOf("{\"secret\":"), 308 - 2 * told);
        // Given once, then handed to a function and read.
        EXPECT_EQ(countOf("{\"secret\":1,"), isReplayable ? 3U : 0U);
        EXPECT_EQ(countOf("{\"secret\":300,"), isReplayable ? 3U : 0U);
        limits = Limits();
    }
}

}  // namespace
