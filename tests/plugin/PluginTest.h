#ifndef SONOLET_TESTS_PLUGIN_PLUGINTEST_H
#define SONOLET_TESTS_PLUGIN_PLUGINTEST_H

#include "../fakes/FakeBackend.h"
#include "../fakes/FakeHost.h"
#include "../fakes/FakeLog.h"
#include "../fakes/FakeSpotify.h"
#include "../fakes/Inspection.h"
#include "../fakes/Test.h"
#include "Spotify.h"
#include "jspp/orvo/shared_ptr.h"

using Strings = std::vector<std::string>;
using Values = FakeHost::Values;

const std::string imageId("\0\1\2\xfa\xfb\xfc\xfd\xfe\xff\x09\x08\7\6\5\4\3\2\1\0M", 20);
constexpr char imageText[] = "AAEC+vv8/f7/CQgHBgUEAwIBAE0=";
constexpr char notRetrieved[] = "Failed to retrieve object from Spotify";

// A fresh root object, one open document, and the fakes around them. At the end everything is let
// go, and both sides must have given back what they took.
class PluginTest : public testing::Test {
protected:
    PluginTest() {
        renewRoot();
        log.reset();
        spotify.calls.clear();
        page = host->open();
    }

    void TearDown() override {
        host.reset();
        g_spotify_instance_Spotify.reset();
        EXPECT_EQ(spotify.imbalance(), "");
        EXPECT_EQ(spotify.sessionsReleased, spotify.sessionsCreated);
        EXPECT_EQ(factory.held(), 0);
        EXPECT_EQ(FakeRequest::alive, 0);
        EXPECT_EQ(registrySize(), 0U);
        spotify.reset();
        factory.reset();
        log.reset();
    }

    // What the dynamic loader does: one root, made after the earlier one has gone.
    static void renewRoot() {
        g_spotify_instance_Spotify.reset();
        g_spotify_instance_Spotify = orvo::shared_ptr<Spotify>(new Spotify);
    }

    static std::size_t registrySize() { return jspp::__detail::inspection::size(); }

    jsplugin_obj* find(const std::string& path) { return host->find(page, path); }
    Answer call(const std::string& path, const std::string& name, const Values& values = {}) {
        return host->call(find(path), name, values);
    }
    Answer session(const std::string& name, const Values& values = {}) {
        return call("Spotify.Session", name, values);
    }
    void createSession() {
        ASSERT_EQ(session("create", {find("Spotify.SessionConfig")}),
                  returned(find("Spotify.Session")));
    }
    // A wrapper of `kind` over what the link leads to.
    jsplugin_obj* create(const std::string& kind, const char* link) {
        const Answer made = call("Spotify." + kind, "create", {link});
        EXPECT_EQ(made.code, JSP_CALL_VALUE) << made;
        return made.value.object;
    }
    // The references to the handle when the body lets the host make a script object.
    int referencesInHost(const FakeHandle* handle, const std::function<void()>& body) {
        int references = -1;
        host->duringCallbacks = [&] { references = handle->references; };
        body();
        host->duringCallbacks = nullptr;
        return references;
    }
    // A member that reads, and the library's call that it makes.
    struct Member {
        jsplugin_obj* object;
        std::string name;
        char kind;
        std::string call;
        bool indexed;
    };
    // From "n numTracks b isLocal@ T track#": reads a number, flag, text, image's id or an Album,
    // aRtist, Track, Playlist or User of the handle labelled `label`. '@': the library is asked for
    // the session's; '#': with an index.
    static std::vector<Member>
    membersOf(jsplugin_obj* object, const std::string& label, const char* list) {
        std::vector<Member> members;
        std::istringstream words(list);
        std::string name;
        for (char kind = 0; words >> kind >> name;) {
            std::string call = "sp_" + label + '_';
            for (const char c : name) {
                call += std::isupper(c) != 0 ? std::string{'_', static_cast<char>(std::tolower(c))}
                                             : std::string(std::isalpha(c) != 0 ? 1 : 0, c);
            }
            const bool indexed = name.back() == '#';
            call += (name.back() == '@' ? "(session, " : "(") + label + (indexed ? ", 1)" : ")");
            name.resize(name.find_last_not_of("@#") + 1);
            members.push_back({object, name, kind, call, indexed});
        }
        return members;
    }
    Answer read(const Member& member) {
        return host->call(member.object, member.name, {member.indexed ? Value(1.9) : "ignored"});
    }
    void expectReads(const std::vector<Member>& members) {
        std::map<char, FakeHandle*> samples = {{'A', spotify.add<sp_album>("an album")},
                                               {'R', spotify.add<sp_artist>("an artist")},
                                               {'T', spotify.add<sp_track>("a track")},
                                               {'P', spotify.add<sp_playlist>("a playlist")},
                                               {'U', spotify.add<sp_user>("a user")}};
        for (const Member& member : members) {
            SCOPED_TRACE(member.call);
            const std::string function = member.call.substr(0, member.call.find('('));
            if (FakeHandle* sample = samples[member.kind]) {
                const int before = sample->references;
                spotify.handles[function] = {sample, sample};
                EXPECT_NE(read(member), read(member)) << "wrapped anew each time";
                EXPECT_EQ(sample->references, before + 2);
                spotify.handles.erase(function);
                EXPECT_EQ(read(member), failed(notRetrieved));
            } else if (member.kind == 'n' || member.kind == 'b') {
                for (const int value : {7, 0}) {
                    spotify.answers[function] = value;
                    EXPECT_EQ(read(member),
                              returned(member.kind == 'n' ? value : Value(value != 0)));
                }
            } else {
                const bool isText = member.kind == 't';
                spotify.texts[function] = isText ? "\xc3\xa5" : imageId.data();
                EXPECT_EQ(read(member), returned(isText ? "\xc3\xa5" : imageText));
                spotify.texts.erase(function);
                EXPECT_EQ(read(member), isText ? returned("") : failed(notRetrieved));
            }
            EXPECT_EQ(spotify.calls.back(), member.call);
        }
    }
    // Without a handle the library is not called.
    void expectCleared(const std::vector<Member>& members) {
        spotify.calls.clear();
        for (const Member& member : members) {
            EXPECT_EQ(read(member), failed(notRetrieved)) << member.call;
        }
        EXPECT_EQ(spotify.calls, Strings());
    }

    // Raises the event for a listener and, where it can be set, the handler of `attribute`. An
    // undefined argument stands for any object; what came stays in host->calls.
    struct Event {
        std::string name;
        std::function<void()> raise;
        Values arguments;
        bool settable = true;
        std::string attribute = "on" + name;
    };
    void expectEvent(jsplugin_obj* object, const Event& event) {
        SCOPED_TRACE(event.name);
        jsplugin_obj* listener = host->function(page);
        host->call(object, "addEventListener", {event.name, listener});
        EXPECT_EQ(host->set(object, event.attribute, host->function(page)).code,
                  event.settable ? JSP_PUT_OK : JSP_PUT_READ_ONLY);
        host->calls.clear();
        event.raise();
        EXPECT_TRUE(host->calls.empty()) << "called inside the callback";
        tick();
        ASSERT_EQ(host->calls.size(), event.settable ? 2U : 1U);
        EXPECT_EQ(host->calls[0].function, listener);
        for (const FakeHost::Call& made : host->calls) {
            Values values = made.arguments;
            for (std::size_t i = 0; i < values.size() && i < event.arguments.size(); ++i) {
                if (values[i].object != nullptr && event.arguments[i] == Value()) {
                    values[i] = Value();
                }
            }
            EXPECT_EQ(values, event.arguments);
        }
        host->call(object, "removeEventListener", {event.name, listener});
    }
    // Lets queued calls reach the page.
    void tick() { host->advance(100); }

    FakeSpotify& spotify = FakeSpotify::get();
    FakeFactory& factory = FakeFactory::get();
    FakeLog& log = FakeLog::get();
    std::unique_ptr<FakeHost> host = std::make_unique<FakeHost>();
    jsplugin_obj* page = nullptr;
};

#endif
