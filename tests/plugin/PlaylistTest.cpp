#include "Factory.h"
#include "Playlistcontainer.h"
#include "PluginTest.h"

namespace {

class PlaylistTest : public PluginTest {
protected:
    PlaylistTest() {
        createSession();
        spotify.handles["sp_playlist_create"] = {handle};
        playlist = create("Playlist", "playlist");
        listener = host->function(page);
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
    jsplugin_obj* other = nullptr;
    EXPECT_EQ(referencesInHost(handle, [&] { other = create("Playlist", "playlist"); }), 2);
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
    EXPECT_EQ(host->call(playlist, "addTracks", {find("Spotify.Track"), 0}), failed(notRetrieved));
    EXPECT_EQ(spotify.calls, Strings());
    spotify.handles.clear();
    EXPECT_EQ(call("Spotify.Playlist", "create", {"playlist"}), failed(notRetrieved));
}

TEST_F(PlaylistTest, LinksImagesAndSubscribersAreTexts) {
    EXPECT_EQ(host->call(playlist, "uri"), failed(notRetrieved));
    EXPECT_EQ(host->call(playlist, "placeholderUri", {0}), failed(notRetrieved));
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
    // clang-format off
    const std::vector<Event> events = {
        {"SubscribersChanged", [&] { callbacks.subscribers_changed(handle, data); }, {playlist}},
        {"PlaylistRenamed", [&] { callbacks.playlist_renamed(handle, data); }, {playlist}},
        {"PlaylistUpdateInProgress", [&] { callbacks.playlist_update_in_progress(handle, true, data); }, {playlist, true}},
        {"TracksMoved", [&] { callbacks.tracks_moved(handle, positions, 2, 7, data); }, {playlist, {}, 7}},
        {"DescriptionChanged", [&] { callbacks.description_changed(handle, nullptr, data); }, {playlist, ""}},
        {"TrackCreatedChanged", [&] { callbacks.track_created_changed(handle, 3, user, 1000, data); }, {playlist, 3, {}, 1000}},
        {"TracksRemoved", [&] { callbacks.tracks_removed(handle, positions, 2, data); }, {playlist, {}}},
        {"PlaylistStateChanged", [&] { callbacks.playlist_state_changed(handle, data); }, {playlist}},
        {"TrackSeenChanged", [&] { callbacks.track_seen_changed(handle, 5, true, data); }, {playlist, 5, true}},
        {"TracksAddedEvent", [&] { callbacks.tracks_added(handle, tracks, 2, 6, data); }, {playlist, {}, 6}, true, "onTracksAdded"},
        {"PlaylistMetadataUpdated", [&] { callbacks.playlist_metadata_updated(handle, data); }, {playlist}},
        {"ImageChanged", [&] { callbacks.image_changed(handle, reinterpret_cast<const byte*>(imageId.data()), data); }, {playlist, imageText}},
        {"ImageChanged", [&] { callbacks.image_changed(handle, nullptr, data); }, {playlist, ""}},
        {"TrackMessageChanged", [&] { callbacks.track_message_changed(handle, 8, "text", data); }, {playlist, 8, "text"}}};
    // clang-format on
    for (const Event& event : events) {
        expectEvent(playlist, event);
        const std::string handler = "Playlist::handle" + event.attribute.substr(2) + "Event";
        EXPECT_EQ(log.count(2, handler), handler.find("Image") == std::string::npos ? 1 : 0);
        const Values& values = host->calls.at(0).arguments;
        if (event.name == "TracksMoved" || event.name == "TracksRemoved") {
            EXPECT_EQ(host->get(values[1].object, "length"), valued(2));
            EXPECT_EQ(host->get(values[1].object, "0"), valued(4));
        } else if (event.name == "TrackCreatedChanged") {
            EXPECT_EQ(host->call(values[2].object, "isLoaded"), returned(false));
            EXPECT_EQ(spotify.calls.back(), "sp_user_is_loaded(user)");
        } else if (event.name == "TracksAddedEvent") {
            jsplugin_obj* array = values[1].object;
            EXPECT_EQ(host->get(array, "length"), valued(2));
            jsplugin_obj* added = host->get(array, "0").value.object;
            EXPECT_EQ(host->call(array, "item", {0.9}), returned(added));
            host->call(added, "disc");
            EXPECT_EQ(spotify.calls.back(), "sp_track_disc(track)");
            EXPECT_EQ(host->set(array, "0", 1).code, JSP_PUT_READ_ONLY);
            EXPECT_EQ(host->call(host->get(array, "1").value.object, "disc"), failed(notRetrieved));
        }
    }
    EXPECT_EQ(log.count(2, "Playlist::handleImageChangedEventid = NULL"), 1);
    EXPECT_EQ(log.count(2, std::string("Playlist::handleImageChangedEventid = ") + imageText), 1);
    host->calls.clear();
    callbacks.playlist_renamed(spotify.add<sp_playlist>("another"), data);
    callbacks.playlist_renamed(handle, this);
    host->collect(playlist);
    for (const Event& late : events) {
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
    for (jsplugin_obj* withoutLink : {find("Spotify.Playlist"), playlist}) {
        EXPECT_EQ(host->call(container, "addPlaylist", {withoutLink}), failed(notRetrieved));
    }
    spotify.handles["sp_link_create_from_playlist"] = {link};
    EXPECT_EQ(host->call(container, "addPlaylist", {playlist}), nothing());
    EXPECT_EQ(spotify.callsTo("sp_playlistcontainer_add_playlist").size(), 1U);
    EXPECT_EQ(link->references, 0);
}

TEST_F(ContainerTest, EveryCallbackRaisesItsEventForAsLongAsTheWrapperLives) {
    const auto [on, wrapper] = containerHandle->listeners.at(0);
    const sp_playlistcontainer_callbacks callbacks = *on;
    void* const data = wrapper;
    sp_playlistcontainer* from = containerHandle;
    // clang-format off
    const std::vector<Event> events = {
        {"PlaylistAdded", [&] { callbacks.playlist_added(from, handle, 1, data); }, {container, {}, 1}},
        {"PlaylistRemoved", [&] { callbacks.playlist_removed(from, handle, 2, data); }, {container, {}, 2}},
        {"PlaylistMoved", [&] { callbacks.playlist_moved(from, handle, 3, 4, data); }, {container, {}, 3, 4}, false},
        {"ContainerLoaded", [&] { callbacks.container_loaded(from, data); }, {container}}};
    // clang-format on
    for (const Event& event : events) {
        EXPECT_EQ(host->get(container, event.attribute), valued(Value::null()));
        expectEvent(container, event);
        EXPECT_EQ(log.count(2, "Playlistcontainer::handle" + event.name + "Event"), 1);
        if (event.arguments.size() > 1) {
            EXPECT_FALSE(host->calls[0].arguments[1] == Value(playlist)) << "a fresh wrapper";
            host->call(host->calls[0].arguments[1].object, "isLoaded");
            EXPECT_EQ(spotify.calls.back(), "sp_playlist_is_loaded(playlist)");
        }
    }
    host->calls.clear();
    host->collect(container);
    for (const Event& late : events) {
        late.raise();
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
        Answer first{};
        EXPECT_EQ(referencesInHost(result, [&, get = name] { first = session(get, {"who"}); }),
                  before + 1)
            << "the reference of the create function was not back";
        EXPECT_NE(session(name, {"who"}), first);
        EXPECT_EQ(result->references, before + 2);
    }
    spotify.handles.clear();
    EXPECT_EQ(session("Playlistcontainer"), failed(notRetrieved));
    host.reset();
    renewRoot();
    log.reset();
    spotify.calls.clear();
    EXPECT_THROW(Factory::getInstance().createPlaylistcontainer(containerHandle),
                 std::runtime_error);
    EXPECT_EQ(spotify.calls, Strings()) << "without a session no reference is taken";
    EXPECT_EQ(log.count(2, "Playlistcontainer::PlaylistcontainerInitializing playlistcontainer"),
              1);
    host = std::make_unique<FakeHost>();
}
