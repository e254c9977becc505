#ifndef SONOLET_TESTS_PLUGIN_PLUGINTEST_H
#define SONOLET_TESTS_PLUGIN_PLUGINTEST_H

#include "../fakes/FakeBackend.h"
#include "../fakes/FakeHost.h"
#include "../fakes/FakeLog.h"
#include "../fakes/FakeSpotify.h"
#include "Spotify.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/orvo/shared_ptr.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

using Strings = std::vector<std::string>;
using Values = FakeHost::Values;

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

    static std::size_t registrySize() { return jspp::__detail::objects().size(); }

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
    struct Failure {
        jsplugin_obj* object;
        const char* function;
        Values values;
        const char* message;
    };
    void expectFailures(const std::vector<Failure>& failures) {
        for (const auto& [object, function, values, message] : failures) {
            EXPECT_EQ(host->call(object, function, values), failed(message)) << function;
        }
    }

    // A member that reads a number ('n'), a flag ('b'), a text ('t') or an Album, aRtist, Track,
    // Playlist or User, and the library's call that it makes, "sp_track_name(track)", or with an
    // index "sp_track_artist(track, 1)".
    struct Member {
        jsplugin_obj* object;
        const char* name;
        char kind;
        std::string call;

        std::string function() const { return call.substr(0, call.find('(')); }
        bool indexed() const { return call.find(", 1)") != std::string::npos; }
    };
    Answer read(const Member& member) {
        return host->call(member.object, member.name, {member.indexed() ? Value(1.9) : "ignored"});
    }
    void expectReads(const std::vector<Member>& members) {
        const std::map<char, FakeHandle*> samples = {{'A', spotify.add<sp_album>("an album")},
                                                     {'R', spotify.add<sp_artist>("an artist")},
                                                     {'T', spotify.add<sp_track>("a track")},
                                                     {'P', spotify.add<sp_playlist>("a playlist")},
                                                     {'U', spotify.add<sp_user>("a user")}};
        for (const Member& member : members) {
            SCOPED_TRACE(member.call);
            const auto known = samples.find(member.kind);
            if (known != samples.end()) {
                FakeHandle* sample = known->second;
                const int before = sample->references;
                spotify.handles[member.function()] = {sample, sample};
                const Answer first = read(member);
                EXPECT_EQ(first.code, JSP_CALL_VALUE);
                EXPECT_NE(read(member), first) << "wrapped anew each time";
                EXPECT_EQ(sample->references, before + 2);
                spotify.handles[member.function()].clear();
                EXPECT_EQ(read(member), failed(notRetrieved));
            } else if (member.kind == 't') {
                for (const char* text : {"\xc3\xa5", static_cast<const char*>(nullptr)}) {
                    spotify.texts[member.function()] = text;
                    EXPECT_EQ(read(member), returned(text == nullptr ? "" : text));
                }
            } else {
                for (const int value : {7, 0}) {
                    spotify.answers[member.function()] = value;
                    EXPECT_EQ(read(member),
                              returned(member.kind == 'n' ? Value(value) : value != 0));
                }
            }
            EXPECT_EQ(spotify.calls.back(), member.call);
            if (member.indexed()) {
                expectFailures({{member.object, member.name, {}, "Not enough arguments"},
                                {member.object, member.name, {"1"}, "Not a number"}});
            }
        }
    }
    // The library is not called for a wrapper without a handle, whatever its arguments.
    void expectCleared(const std::vector<Member>& members) {
        spotify.calls.clear();
        for (const Member& member : members) {
            EXPECT_EQ(read(member), failed(notRetrieved)) << member.call;
        }
        EXPECT_EQ(spotify.calls, Strings());
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
