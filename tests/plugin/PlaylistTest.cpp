#include "PluginTest.h"

#include <string.h>

#include <functional>

namespace {

class PlaylistTest : public PluginTest {
protected:
    PlaylistTest() {
        createSession();
        spotify.handles["sp_playlist_create"] = {handle};
        playlist = create("Playlist", "playlist");
        listener = host->function(page);
    }
    // What the one call so far carried after its first argument, which is `sender`.
    Values told(jsplugin_obj* sender) {
        tick();
        EXPECT_EQ(host->calls.size(), 1U);
        const Values all = host->calls.at(0).arguments;
        EXPECT_EQ(all.at(0), Value(sender));
        host->calls.clear();
        return {all.begin() + 1, all.end()};
    }

    sp_playlist* handle = spotify.add<sp_playlist>("playlist");
    sp_track* track = spotify.add<sp_track>("track");
    sp_user* user = spotify.add<sp_user>("user");
    sp_link* link = spotify.add<sp_link>(std::string(120, 'l'));
    jsplugin_obj* playlist = nullptr;
    jsplugin_obj* listener = nullptr;
};

class ContainerTest : public PlaylistTest {
protected:
    ContainerTest() {
        spotify.handles["sp_session_playlistcontainer"] = {containerHandle};
        container = session("Playlistcontainer").value.object;
    }

    sp_playlistcontainer* containerHandle = spotify.add<sp_playlistcontainer>("playlistcontainer");
    jsplugin_obj* container = nullptr;
};

}  // namespace

TEST_F(PlaylistTest, AnswersWhatTheLibraryDoesAndLosesItsMembersAtLogout) {
    const std::vector<Member> members =
        membersOf(playlist, "playlist",
                  "b isInRam@ n trackCreateTime# b hasPendingChanges T track# n numSubscribers "
                  "t getDescription b trackSeen# n numTracks U trackCreator# U owner b isLoaded "
                  "b isCollaborative t trackMessage# t name");
    expectReads(members);
    EXPECT_EQ(handle->references, 1) << "the reference of the create function was kept";
    EXPECT_EQ(host->call(playlist, "release"), nothing());
    jsplugin_obj* other = create("Playlist", "playlist");
    EXPECT_NE(other, playlist);
    host->collect(other);
    session("logout");
    EXPECT_EQ(handle->references + handle->registrations, 0);
    for (const Member& member : members) {
        EXPECT_EQ(host->get(playlist, member.name).code, JSP_GET_NO_PROPERTY) << member.name;
    }
    EXPECT_EQ(host->get(playlist, "onTracksAdded").code, JSP_GET_NO_PROPERTY);
    EXPECT_EQ(host->set(playlist, "onTracksAdded", listener).code, JSP_PUT_READ_ONLY);
    EXPECT_EQ(host->call(playlist, "addEventListener", {"E", listener}), nothing());
}

TEST_F(PlaylistTest, SettersPassTheirArgumentsAndAnswerNothing) {
    jsplugin_obj* trackObject = create("Track", "track");
    const std::vector<std::tuple<const char*, Values, const char*>> setters = {
        {"updateSubscribers", {}, "sp_playlist_update_subscribers(session, playlist)"},
        {"setAutolinkTracks", {true}, "sp_playlist_set_autolink_tracks(playlist, true)"},
        {"setInRam", {false}, "sp_playlist_set_in_ram(session, playlist, false)"},
        {"trackSetSeen", {2.9, true}, "sp_playlist_track_set_seen(playlist, 2, true)"},
        {"addTracks",
         {trackObject, 3.9},
         "sp_playlist_add_tracks(playlist, track, 1, 3, session)"}};
    for (const auto& [name, values, expected] : setters) {
        spotify.answers[std::string(expected, strchr(expected, '('))] = SP_ERROR_PERMISSION_DENIED;
        EXPECT_EQ(host->call(playlist, name, values), nothing());
        EXPECT_EQ(spotify.calls.back(), expected);
    }
    spotify.calls.clear();
    expectFailures({{playlist, "setAutolinkTracks", {}, "Not enough arguments"},
                    {playlist, "setInRam", {"true"}, "Not a boolean"},
                    {playlist, "trackSetSeen", {"0"}, "Not a number"},
                    {playlist, "trackSetSeen", {0}, "Not enough arguments"},
                    {playlist, "trackSetSeen", {0, 1}, "Not a boolean"},
                    {playlist, "addTracks", {}, "Not enough arguments"},
                    {playlist, "addTracks", {1, 0}, "Not an interface"},
                    {playlist, "addTracks", {listener, 0}, "Not a jspp interface"},
                    {playlist,
                     "addTracks",
                     {playlist, 0},
                     "Parameter is not of the requested interface type."},
                    {playlist, "addTracks", {trackObject}, "Not enough arguments"},
                    {playlist, "addTracks", {trackObject, "0"}, "Not a number"},
                    {playlist, "addTracks", {find("Spotify.Track"), 0}, notRetrieved},
                    {find("Spotify.Playlist"), "create", {}, "Not enough arguments"},
                    {find("Spotify.Playlist"), "create", {5}, "Not a string"}});
    EXPECT_EQ(spotify.calls, Strings());
    expectFailures({{find("Spotify.Playlist"), "create", {"unknown"}, notRetrieved}});
    spotify.handles.clear();
    expectFailures({{find("Spotify.Playlist"), "create", {"playlist"}, notRetrieved}});
}

TEST_F(PlaylistTest, LinksImagesAndSubscribersAreTexts) {
    expectFailures({{playlist, "uri", {}, notRetrieved},
                    {playlist, "placeholderUri", {0}, notRetrieved},
                    {playlist, "placeholderUri", {}, "Not enough arguments"}});
    spotify.handles["sp_link_create_from_playlist"] = {link};
    spotify.handles["sp_link_create_from_track"] = {link};
    spotify.handles["sp_playlist_track"] = {track};
    EXPECT_EQ(host->call(playlist, "uri"), returned(std::string(99, 'l')));
    EXPECT_EQ(host->call(playlist, "placeholderUri", {0.9}), returned(std::string(99, 'l')));
    EXPECT_EQ(spotify.callsTo("sp_link_create_from_track").back(),
              "sp_link_create_from_track(track, 0)");
    EXPECT_EQ(std::exchange(link->references, 0), 2) << "a link was released";

    EXPECT_EQ(host->call(playlist, "getImage"), returned(""));
    EXPECT_EQ(log.count(5, "Playlist::getImageFailed to retrieve image id from libspotify"), 1);
    spotify.texts["sp_playlist_get_image"] = imageId.data();
    EXPECT_EQ(host->call(playlist, "getImage"), returned(imageText));

    spotify.subscribers = {"one", "two"};
    jsplugin_obj* names = host->call(playlist, "subscribers").value.object;
    EXPECT_EQ(spotify.calls.back(), "sp_playlist_subscribers_free()");
    spotify.subscribers.clear();
    EXPECT_EQ(host->get(names, "length"), valued(2));
    EXPECT_EQ(host->get(names, "1"), valued("two"));
    EXPECT_EQ(host->get(host->call(playlist, "subscribers").value.object, "length"), valued(0));
}

TEST_F(PlaylistTest, EveryCallbackRaisesItsEventForAsLongAsTheWrapperLives) {
    const auto [on, wrapper] = handle->listeners.at(0);
    const sp_playlist_callbacks callbacks = *on;  // outlives the wrapper's own
    void* const data = wrapper;
    const int positions[] = {4, 2};
    sp_track* tracks[] = {track, nullptr};
    struct Case {
        const char* event;
        std::function<void()> raise;
        Values arguments;  // without objects
    };
    // clang-format off
    const std::vector<Case> cases = {
        {"SubscribersChanged", [&] { callbacks.subscribers_changed(handle, data); }, {}},
        {"PlaylistRenamed", [&] { callbacks.playlist_renamed(handle, data); }, {}},
        {"PlaylistUpdateInProgress", [&] { callbacks.playlist_update_in_progress(handle, true, data); }, {true}},
        {"TracksMoved", [&] { callbacks.tracks_moved(handle, positions, 2, 7, data); }, {{}, 7}},
        {"DescriptionChanged", [&] { callbacks.description_changed(handle, nullptr, data); }, {""}},
        {"TrackCreatedChanged", [&] { callbacks.track_created_changed(handle, 3, user, 1000, data); }, {3, {}, 1000}},
        {"TracksRemoved", [&] { callbacks.tracks_removed(handle, positions, 2, data); }, {{}}},
        {"PlaylistStateChanged", [&] { callbacks.playlist_state_changed(handle, data); }, {}},
        {"TrackSeenChanged", [&] { callbacks.track_seen_changed(handle, 5, true, data); }, {5, true}},
        {"TracksAdded", [&] { callbacks.tracks_added(handle, tracks, 2, 6, data); }, {{}, 6}},
        {"PlaylistMetadataUpdated", [&] { callbacks.playlist_metadata_updated(handle, data); }, {}},
        {"ImageChanged", [&] { callbacks.image_changed(handle, reinterpret_cast<const byte*>(imageId.data()), data); }, {imageText}},
        {"ImageChanged", [&] { callbacks.image_changed(handle, nullptr, data); }, {""}},
        {"TrackMessageChanged", [&] { callbacks.track_message_changed(handle, 8, "text", data); }, {8, "text"}}};
    // clang-format on
    for (const auto& [event, raise, arguments] : cases) {
        SCOPED_TRACE(event);
        const std::string name = event;
        EXPECT_EQ(host->set(playlist, "on" + name, listener), stored());
        raise();
        Values values = told(playlist);
        jsplugin_obj* object = nullptr;
        for (std::size_t i = 0; i < values.size() && i < arguments.size(); ++i) {
            if (arguments[i] == Value()) {
                object = std::exchange(values[i], {}).object;
            }
        }
        EXPECT_EQ(values, arguments);
        EXPECT_GE(log.count(2, "Playlist::handle" + name + "Event"),
                  name == "ImageChanged" ? 0 : 1);
        if (name == "TracksMoved" || name == "TracksRemoved") {
            EXPECT_EQ(host->get(object, "length"), valued(2));
            EXPECT_EQ(host->get(object, "0"), valued(4));
        } else if (name == "TrackCreatedChanged") {
            EXPECT_EQ(host->call(object, "isLoaded"), returned(false));
            EXPECT_EQ(spotify.calls.back(), "sp_user_is_loaded(user)");
        } else if (name == "TracksAdded") {
            EXPECT_EQ(host->get(object, "length"), valued(2));
            jsplugin_obj* added = host->get(object, "0").value.object;
            EXPECT_EQ(host->call(object, "item", {0.9}), returned(added));
            host->call(added, "disc");
            EXPECT_EQ(spotify.calls.back(), "sp_track_disc(track)");
            for (const char* index : {"-1", "2"}) {
                EXPECT_EQ(host->get(object, index), raised("Out of bounds array access"));
            }
            expectFailures({{object, "item", {-1}, "Out of bounds array access"},
                            {object, "item", {}, "Not enough arguments"},
                            {host->get(object, "1").value.object, "disc", {}, notRetrieved}});
            EXPECT_EQ(host->get(object, "x"), raised("bad_lexical_cast"));
            EXPECT_EQ(host->set(object, "0", 1).code, JSP_PUT_READ_ONLY);
        }
    }
    EXPECT_EQ(log.count(2, "Playlist::handleImageChangedEventid = NULL"), 1);
    EXPECT_EQ(log.count(2, std::string("Playlist::handleImageChangedEventid = ") + imageText), 1);
    jsplugin_obj* byName = host->function(page);
    host->call(playlist, "addEventListener", {"TracksAdded", byName});
    host->call(playlist, "addEventListener", {"TracksAddedEvent", byName});
    callbacks.tracks_added(handle, tracks, 0, 0, data);
    tick();
    EXPECT_EQ(host->callsOf(byName), 1);
    host->calls.clear();

    callbacks.playlist_renamed(spotify.add<sp_playlist>("another"), data);
    callbacks.playlist_renamed(handle, this);
    host->collect(playlist);
    for (const Case& late : cases) {
        late.raise();
    }
    tick();
    EXPECT_TRUE(host->calls.empty());
}

TEST_F(ContainerTest, AnswersWhatTheLibraryDoesAlsoAfterLogout) {
    session("logout");
    expectReads(membersOf(container, "playlistcontainer",
                          "P playlist# n playlistType# n numPlaylists b isLoaded U owner"));
    const std::string function = "sp_playlistcontainer_playlist_folder_";
    EXPECT_EQ(host->call(container, "playlistFolderName", {0}), returned(""));
    const std::string longName(60, 'n');
    spotify.texts[function + "name"] = longName.c_str();
    EXPECT_EQ(host->call(container, "playlistFolderName", {2.9}), returned(std::string(49, 'n')));
    EXPECT_EQ(spotify.calls.back(), function + "name(playlistcontainer, 2)");
    spotify.answers[function + "id"] = -1;
    EXPECT_EQ(host->call(container, "playlistFolderId", {1}), returned(18446744073709551615.0));
    EXPECT_EQ(host->call(container, "release"), nothing());
    EXPECT_EQ(log.count(2, "Session::PlaylistcontainerRetrieving playlistcontainer"), 1);
    EXPECT_EQ(log.count(2, "Playlistcontainer::PlaylistcontainerInitializing playlistcontainer"),
              1);
    host->collect(container);
    EXPECT_GT(containerHandle->registrations, 0) << "a playlist keeps its container";
    host->close(page);
    EXPECT_EQ(log.count(2, "Playlistcontainer::~PlaylistcontainerDestroying playlist container"),
              1);
    EXPECT_EQ(containerHandle->references + containerHandle->registrations, 0);
}

TEST_F(ContainerTest, APlaylistIsAddedByALinkThatIsReleasedAfterwards) {
    expectFailures({{container, "addPlaylist", {}, "Not enough arguments"},
                    {container, "addPlaylist", {"list"}, "Not an interface"},
                    {container, "addPlaylist", {listener}, "Not a jspp interface"},
                    {container,
                     "addPlaylist",
                     {container},
                     "Parameter is not of the requested interface type."},
                    {container, "addPlaylist", {find("Spotify.Playlist")}, notRetrieved},
                    {container, "addPlaylist", {playlist}, notRetrieved}});
    spotify.handles["sp_link_create_from_playlist"] = {link};
    EXPECT_EQ(host->call(container, "addPlaylist", {playlist}), nothing());
    EXPECT_EQ(spotify.callsTo("sp_playlistcontainer_add_playlist").size(), 1U);
    EXPECT_EQ(link->references, 0);
}

TEST_F(ContainerTest, EveryCallbackRaisesItsEventForAsLongAsTheWrapperLives) {
    const auto [on, wrapper] = containerHandle->listeners.at(0);
    const sp_playlistcontainer_callbacks callbacks = *on;
    void* const data = wrapper;
    const std::vector<std::tuple<std::string, std::function<void()>, Values>> cases = {
        {"PlaylistAdded", [&] { callbacks.playlist_added(containerHandle, handle, 1, data); }, {1}},
        {"PlaylistRemoved",
         [&] { callbacks.playlist_removed(containerHandle, handle, 2, data); },
         {2}},
        {"PlaylistMoved",
         [&] { callbacks.playlist_moved(containerHandle, handle, 3, 4, data); },
         {3, 4}},
        {"ContainerLoaded", [&] { callbacks.container_loaded(containerHandle, data); }, {}}};
    for (const auto& [event, raise, arguments] : cases) {
        SCOPED_TRACE(event);
        host->call(container, "addEventListener", {event, host->function(page)});
        raise();
        Values values = told(container);
        if (event != "ContainerLoaded") {
            EXPECT_FALSE(values.at(0) == Value(playlist)) << "a fresh wrapper each time";
            EXPECT_EQ(host->call(values[0].object, "isLoaded"), returned(false));
            values.erase(values.begin());
        }
        EXPECT_EQ(values, arguments);
        EXPECT_EQ(log.count(2, "Playlistcontainer::handle" + event + "Event"), 1);
        const bool settable = event != "PlaylistMoved";
        EXPECT_EQ(host->get(container, "on" + event), valued(Value::null()));
        EXPECT_EQ(host->set(container, "on" + event, listener).code,
                  settable ? JSP_PUT_OK : JSP_PUT_READ_ONLY);
        raise();
        tick();
        EXPECT_EQ(host->callsOf(listener), settable ? 1 : 0);
        host->calls.clear();
    }
    host->collect(container);
    for (const auto& [event, raise, arguments] : cases) {
        raise();
    }
    tick();
    EXPECT_TRUE(host->calls.empty());
}

TEST_F(ContainerTest, TheSessionHandsOutItsListsAndKeepsNoReferenceOfTheirCreation) {
    const std::vector<std::tuple<const char*, const char*, FakeHandle*>> getters = {
        {"inboxCreate", "sp_session_inbox_create(session)", handle},
        {"starredCreate", "sp_session_starred_create(session)", handle},
        {"starredForUserCreate", "sp_session_starred_for_user_create(session, who)", handle},
        {"publishedContainerForUserCreate",
         "sp_session_publishedcontainer_for_user_create(session, who)", containerHandle}};
    for (const auto& [name, expected, result] : getters) {
        EXPECT_EQ(session(name, {"who"}), failed(notRetrieved));
        EXPECT_EQ(spotify.calls.back(), expected);
        spotify.handles[std::string(expected, strchr(expected, '('))] = {result};
        const int before = result->references;
        const Answer first = session(name, {"who"});
        EXPECT_NE(session(name, {"who"}), first);
        EXPECT_EQ(result->references, before + 2);
    }
    for (const char* name : {"starredForUserCreate", "publishedContainerForUserCreate"}) {
        EXPECT_EQ(session(name), failed("Not enough arguments"));
        EXPECT_EQ(session(name, {5}), failed("Not a string"));
    }
    spotify.handles.clear();
    EXPECT_EQ(session("Playlistcontainer"), failed(notRetrieved));
}
