#include "PluginTest.h"

namespace {

class QueryTest : public PluginTest {
protected:
    struct Query {
        const char* kind;
        Values arguments;
        std::string call;
        FakeHandle* result;
        std::function<void()> complete;  // once for every create
    };

    QueryTest() {
        createSession();
        spotify.add<sp_album>("album");
        spotify.add<sp_artist>("artist");
        listener = host->function(page);
        queries = {{"Search",
                    {"text", 1.9, 2, 3, 4, 5, 6, 7, 8, 1, listener},
                    "sp_search_create(session, text, 1, 2, 3, 4, 5, 6, 7, 8, 1)",
                    search,
                    completion(search)},
                   {"Albumbrowse",
                    {create("Album", "album"), listener},
                    "sp_albumbrowse_create(session, album)",
                    albumbrowse,
                    completion(albumbrowse)},
                   {"Artistbrowse",
                    {create("Artist", "artist"), 2, listener},
                    "sp_artistbrowse_create(session, artist, 2)",
                    artistbrowse,
                    completion(artistbrowse)},
                   {"Toplistbrowse",
                    {1, 0x5345, "", listener},
                    "sp_toplistbrowse_create(session, 1, 21317, null)",
                    toplistbrowse,
                    completion(toplistbrowse)}};
    }
    template <typename Kind>
    static std::function<void()> completion(Kind* result) {
        return [result] {
            for (const auto& [complete, request] : result->listeners) {
                complete(result, request);
            }
        };
    }
    Answer start(const Query& query) {
        const std::string function = query.call.substr(0, query.call.find('('));
        spotify.handles[function] = {query.result};
        return call(std::string("Spotify.") + query.kind, "create", query.arguments);
    }

    sp_search* search = spotify.add<sp_search>("search");
    sp_albumbrowse* albumbrowse = spotify.add<sp_albumbrowse>("albumbrowse");
    sp_artistbrowse* artistbrowse = spotify.add<sp_artistbrowse>("artistbrowse");
    sp_toplistbrowse* toplistbrowse = spotify.add<sp_toplistbrowse>("toplistbrowse");
    jsplugin_obj* listener = nullptr;
    std::vector<Query> queries;
};

class ImageTest : public PluginTest {
protected:
    ImageTest() {
        createSession();
        spotify.handles["sp_image_create"] = {handle};
    }
    jsplugin_obj* make() { return create("SpImage", imageText); }

    sp_image* handle = spotify.add<sp_image>("image");
};

}  // namespace

TEST_F(QueryTest, NothingIsStartedOrKeptWhenAQueryFails) {
    for (const Query& query : queries) {
        spotify.calls.clear();
        EXPECT_EQ(call(std::string("Spotify.") + query.kind, "create", query.arguments),
                  failed(notRetrieved));
        EXPECT_EQ(spotify.calls, Strings{query.call});
    }
    host->collectGarbage(page);
    EXPECT_FALSE(host->alive(listener)) << "a query that was not started keeps its function";
    EXPECT_EQ(call("Spotify.Albumbrowse", "create", {find("Spotify.Album"), host->function(page)}),
              failed(notRetrieved));
}

TEST_F(QueryTest, TheFunctionIsCalledOnceWithAnotherWrapperAlsoWhenThePageKeepsNothingElse) {
    for (const Query& query : queries) {
        SCOPED_TRACE(query.kind);
        jsplugin_obj* first = start(query).value.object;
        EXPECT_EQ(query.result->references, 2) << "the request's and the wrapper's";
        EXPECT_EQ(host->call(first, "isLoaded"), returned(false));
        EXPECT_EQ(host->call(first, "release"), nothing());
        EXPECT_EQ(host->get(first, "create").code,
                  query.result == search ? JSP_GET_VALUE_CACHE : JSP_GET_NO_PROPERTY);
        host->collect(first);
        EXPECT_EQ(query.result->references, 1);
        host->collectGarbage(page);
        query.complete();
        query.complete();  // a library that repeats itself
        EXPECT_EQ(query.result->references, 1) << "the waiting call's wrapper alone";
        EXPECT_TRUE(host->calls.empty()) << "called inside the completion";
        tick();
        ASSERT_EQ(host->calls.size(), 1U);
        ASSERT_EQ(host->calls[0].arguments.size(), 1U);
        EXPECT_EQ(host->call(host->calls[0].arguments[0].object, "error"), returned(0));
        host->calls.clear();
    }
    queries[3].arguments[2] = "user";
    host->refusesObjects = true;
    EXPECT_EQ(start(queries[3]), failed("Create object failed"));
    host->refusesObjects = false;
    queries[3].complete();
    tick();
    EXPECT_EQ(host->calls.size(), 1U) << "a query that was started is answered all the same";
    EXPECT_FALSE(spotify.callsTo("sp_toplistbrowse_create(session, 1, 21317, user)").empty());
}

TEST_F(QueryTest, WhatIsPendingEndsWithItsDocumentOrItsSession) {
    for (const Query& query : queries) {
        start(query);
    }
    host->close(page);
    host->reopen(page);
    queries[0].complete();
    queries[1].complete();
    tick();
    EXPECT_TRUE(host->calls.empty());
    EXPECT_EQ(search->references + albumbrowse->references, 0);
    EXPECT_EQ(artistbrowse->references, 1) << "pending still";
    host.reset();
    g_spotify_instance_Spotify.reset();
    EXPECT_EQ(spotify.imbalance(), "");
    queries[2].complete();  // late
    host = std::make_unique<FakeHost>();
    renewRoot();
    page = host->open();
    EXPECT_EQ(
        call("Spotify.Artistbrowse", "create", {find("Spotify.Artist"), 0, host->function(page)}),
        failed("Spotify was not initialized correctly"));
}

TEST_F(QueryTest, ResultsAnswerWhatTheLibraryDoesUntilLogout) {
    const char* const lists[] = {
        "A album# R artist# T track# P playlist# n numAlbums n numArtists n numTracks "
        "n numPlaylists n totalAlbums n totalArtists n totalTracks n totalPlaylists t query "
        "t didYouMean t playlistName# t playlistUri# t playlistImageUri# b isLoaded n error",
        "A album R artist T track# n numCopyrights t copyright# n numTracks b isLoaded n error",
        "A album# R artist T tophitTrack# n numAlbums n numTophitTracks b isLoaded n error",
        "A album# R artist# T track# n numAlbums n numArtists n numTracks b isLoaded n error"};
    std::vector<std::vector<Member>> members;
    for (const Query& query : queries) {
        members.push_back(
            membersOf(start(query).value.object, query.result->label, lists[members.size()]));
        query.complete();
        expectReads(members.back());
    }
    tick();
    EXPECT_EQ(session("logout"), nothing());
    for (std::size_t i = 0; i < members.size(); ++i) {
        EXPECT_EQ(queries[i].result->references, 0);
        expectCleared(members[i]);
    }
}

TEST_F(ImageTest, IsMadeFromExactlyOneIdAndRaisesItsEventWhileItLives) {
    jsplugin_obj* image = nullptr;
    EXPECT_EQ(referencesInHost(handle, [&] { image = make(); }), 1);
    create("SpImage", (std::string(imageText) + "QQQQ").c_str());
    const std::string asked = "sp_image_create(session, " + imageId + ")";
    create("SpImage", "AAEC");  // the rest counts as padding
    const std::string padded =
        "sp_image_create(session, " + imageId.substr(0, 3) + std::string(17, '\0') + ")";
    EXPECT_EQ(spotify.callsTo("sp_image_create"), (Strings{asked, asked, padded}));
    EXPECT_EQ(handle->references, 3) << "one of each wrapper";
    jsplugin_obj* other = make();
    spotify.handles.clear();
    EXPECT_EQ(call("Spotify.SpImage", "create", {imageText}), failed(notRetrieved));
    const auto listeners = handle->listeners;
    const auto raise = [&] {
        for (const auto& [callback, wrapper] : listeners) {
            callback(handle, wrapper);
        }
    };
    expectEvent(image, {"ImageLoaded", raise, {image}});
    host->call(other, "addEventListener", {"ImageLoaded", host->function(page)});
    host->collect(image);
    EXPECT_EQ(handle->listeners.size(), 3U);
    EXPECT_EQ(spotify.calls.back(), "sp_image_release(image)");
    const auto late = handle->listeners.back();
    session("logout");
    host->calls.clear();
    raise();
    late.first(handle, late.second);
    tick();
    EXPECT_TRUE(host->calls.empty()) << "a late callback was taken for a living picture's";
}

TEST_F(ImageTest, AnswersBase64AndLosesItsMembersAtLogout) {
    jsplugin_obj* image = make();
    expectReads(membersOf(image, "image", "b isLoaded n error n format"));
    expectReads({{image, "id", 'i', "sp_image_image_id(image)", false}});
    EXPECT_EQ(host->call(image, "data"), failed("Image size is zero"));
    spotify.texts["sp_image_data"] = "foob";
    EXPECT_EQ(host->call(image, "data"), returned("Zm9vYg=="));
    session("logout");
    EXPECT_EQ(handle->references + handle->registrations, 0);
    for (const char* name : {"isLoaded", "error", "format", "data", "id", "onImageLoaded"}) {
        EXPECT_EQ(host->get(image, name).code, JSP_GET_NO_PROPERTY) << name;
    }
    EXPECT_EQ(host->call(image, "isLoaded").code, JSP_CALL_NO_FUNCTION) << "a function kept before";
    EXPECT_EQ(host->get(image, "addEventListener").code, JSP_GET_VALUE_CACHE);
}
