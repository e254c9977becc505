// What is asked of a server is what the interface's documents have, and what is read of its answers
// is what a server says. The answers are supysonic's, written into answers.json by record.sh.

#include "../TestMusic.h"
#include "../TestSession.h"
#include "Answers.h"
#include "BadServer.h"
#include "Interface.h"
#include "accounts/ListItems.h"
#include "server/ServerStore.h"
#include "source/Source.h"
#include "subsonic/Subsonic.h"

namespace sonolet::test {
namespace {

using namespace service;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Names = std::vector<std::string>;

// What the table says of a field holds of one thing in an answer.
void expectField(JsonObject* item, const Field& field, bool& wasGiven) {
    JsonNode* given = json_object_get_member(item, field.name);
    wasGiven = wasGiven || given != nullptr;
    EXPECT_TRUE(given != nullptr || field.given != Given::always) << field.name << " is missing";
    if (given == nullptr && field.example == nullptr) {
        return;
    }
    std::string meaning;
    if (given == nullptr) {
        g_autoptr(GError) error = nullptr;
        json_object_set_member(item, field.name, json_from_string(field.example, &error));
        ASSERT_EQ(error, nullptr) << field.example;
        meaning = field.meaning;
    } else {
        ASSERT_EQ(json_node_get_value_type(given), field.type) << field.name;
        meaning = Reply::parse("{\"it\":" + Answers::text(given) + "}")["it"].text();
    }
    g_autoptr(JsonNode) node = json_node_init_object(json_node_alloc(), item);
    EXPECT_EQ(field.read(Reply::parse(Answers::text(node))), meaning) << field.name;
    if (given == nullptr) {
        json_object_remove_member(item, field.name);
    }
}

TEST(ConformanceOfAnswers, IsThatOfWhatIsRead) {
    const Answers answers;
    std::map<const Field*, bool> given;
    std::set<std::string> known = {"subsonic-response"};
    for (const Place& place : places) {
        SCOPED_TRACE(std::string(place.answer) + ' ' + place.path);
        const std::vector<JsonObject*> items = objectsAt(answers.node(place.answer), place.path);
        EXPECT_FALSE(items.empty());
        for (const Field& field : place.fields) {
            for (JsonObject* item : items) {
                expectField(item, field, given[&field]);
            }
            known.insert(field.name);
        }
        std::istringstream names(place.path);
        for (std::string name; std::getline(names, name, '/');) {
            known.insert(name);
        }
    }
    for (const auto& [field, isGiven] : given) {
        EXPECT_EQ(isGiven, field->given != Given::elsewhere) << field->name;
    }
    // Nothing is read that is not in the table.
    const std::string before = "[\"", after = "\"]";
    for (const char* room : {"/subsonic", "/server"}) {
        for (const auto& file :
             std::filesystem::directory_iterator(SONOLET_SERVICE + std::string(room))) {
            std::ifstream stream(file.path());
            const std::string source{std::istreambuf_iterator<char>(stream), {}};
            for (std::size_t at = 0; (at = source.find(before, at)) != std::string::npos;) {
                at += before.size();
                const std::string field = source.substr(at, source.find(after, at) - at);
                EXPECT_EQ(known.count(field), 1U) << file.path() << ": " << field;
            }
        }
    }
}

// ---- What is asked, and what becomes of the answers ----

Names names(const Reply& list, const char* field = "name") {
    Names all;
    for (const Reply& item : list.list()) {
        all.push_back(item[field].text());
    }
    return all;
}

// A server that gives the answers, and notes what it is asked.
struct ConformanceOfRequests : testing::Test {
    ConformanceOfRequests() {
        // NOLINTBEGIN(concurrency-mt-unsafe): no other thread is there yet
        setenv("SONOLET_SERVER", server.url().c_str(), 1);
        setenv("SONOLET_SERVER_PATIENCE", "60", 1);
        setenv("SONOLET_SERVER_LOOK", "0", 1);
        // NOLINTEND(concurrency-mt-unsafe)
        for (const auto& [method, rules] : documented) {
            server.answer(method, [this, name = method](const std::string& head) {
                return answer(name, parametersOf(head));
            });
        }
    }
    ~ConformanceOfRequests() override {
        session.reset();
        // NOLINTBEGIN(concurrency-mt-unsafe): the session has ended its threads
        for (const char* name : {"", "_PATIENCE", "_LOOK", "_TRANSCODE"}) {
            unsetenv((std::string("SONOLET_SERVER") + name).c_str());
        }
        // NOLINTEND(concurrency-mt-unsafe)
    }

    // The server's thread.
    std::string answer(const std::string& method, const Parameters& parameters) {
        const auto value = [&](const char* name) {
            const auto found = parameters.find(name);
            return found == parameters.end() ? std::string() : found->second;
        };
        const std::lock_guard<std::mutex> lock(mutex);
        asked.emplace_back(method, parameters);
        wasToldOf.notify_all();
        std::string note;
        if (method == "stream") {
            return BadServer::reply(sound, "200 OK", "audio/x-wav");
        }
        if (method == "download") {
            constexpr int notAllowed = 50;
            return BadServer::failure(notAllowed);  // supysonic lets everybody
        }
        if (method == "createPlaylist" && !value("name").empty()) {
            hasMade = true;
        } else if (method == "getAlbumList2") {
            note = ' ' + value("type");
        } else if ((method == "getPlaylists" && hasMade) ||
                   (method == "getPlaylist" && value("id") != mix)) {
            note = " made";
        } else if (method == "getPlaylist" && whileAskedForList != nullptr) {
            std::exchange(whileAskedForList, nullptr)();
        } else if (method == "getCoverArt" || (method == "getUsers" && !isAdministrator)) {
            note = " refused";
        }
        std::string text = answers.text(method + note);
        for (const auto& [title, count] : plays) {
            const std::string field = R"("title":")" + title + '"';
            if (const std::size_t at = text.find(field); at != std::string::npos) {
                text.insert(at, R"("playCount":)" + std::to_string(count) + ',');
            }
        }
        return BadServer::reply(text);
    }
    // Under the lock.
    bool hasAsked(const std::string& method, const char* parameter) const {
        return std::any_of(asked.begin(), asked.end(), [&](const auto& each) {
            return each.first == method && each.second.count(parameter) > 0;
        });
    }
    // Without any event of the session.
    void untilAsked(const std::string& method, const char* parameter) {
        std::unique_lock<std::mutex> lock(mutex);
        EXPECT_TRUE(wasToldOf.wait_for(lock, std::chrono::minutes(10),
                                       [&] { return hasAsked(method, parameter); }))
            << method << ' ' << parameter;
    }
    void until(const std::function<bool()>& condition, const std::string& what) {
        EXPECT_TRUE(session->until(condition)) << what << '\n' << session->log;
    }

    Names toplist(sp_toplisttype type, int region) {
        const std::shared_ptr<sp_toplistbrowse> list(
            sp_toplistbrowse_create(session->get(), type, static_cast<sp_toplistregion>(region),
                                    nullptr, nullptr, nullptr),
            sp_toplistbrowse_release);
        until([&] { return sp_toplistbrowse_is_loaded(list.get()); }, "a top list");
        Names all;
        for (int i = 0; i < sp_toplistbrowse_num_tracks(list.get()); ++i) {
            all.emplace_back(sp_track_name(sp_toplistbrowse_track(list.get(), i)));
        }
        for (int i = 0; i < sp_toplistbrowse_num_albums(list.get()); ++i) {
            all.emplace_back(sp_album_name(sp_toplistbrowse_album(list.get(), i)));
        }
        for (int i = 0; i < sp_toplistbrowse_num_artists(list.get()); ++i) {
            all.emplace_back(sp_artist_name(sp_toplistbrowse_artist(list.get(), i)));
        }
        return all;
    }
    void expectTopLists();
    void expectSearchesAndBrowses(sp_track* track);
    void play(sp_track* track, const char* parameter);
    void expectLists();

    TestMusic music;
    TestFiles files;
    const Answers answers;
    const std::string mix = answers["getPlaylist"]["playlist"]["id"].text();
    const std::string sound = [this] {
        std::ifstream stream(files.writeWav("song.wav", sweep(4410)), std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(stream), {}};
    }();
    ServerStore links{files.path("links.db")};

    std::mutex mutex;
    std::condition_variable wasToldOf;
    // State below is protected by mutex.
    std::vector<std::pair<std::string, Parameters>> asked;
    std::map<std::string, int> plays;  // by title
    std::function<void()> whileAskedForList;
    bool hasMade = false;
    bool isAdministrator = false;

    BadServer server;
    std::optional<TestSession> session;
};

// What nobody has played or starred here is as the server has it.
void ConformanceOfRequests::expectTopLists() {
    const Reply frequent = answers["getAlbumList2 frequent"]["albumList2"]["album"];
    const Reply newest = answers["getAlbumList2 newest"]["albumList2"]["album"];
    const Reply starred = answers["getStarred2"]["starred2"];
    const Names ofAlbum = names(answers["getAlbum"]["album"]["song"], "title");
    const int norway = 'N' << 8 | 'O';
    const struct {
        sp_toplisttype type;
        int region;
        Names names;
    } lists[] = {
        {SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_REGION_EVERYWHERE, names(frequent)},
        {SP_TOPLIST_TYPE_ARTISTS, SP_TOPLIST_REGION_EVERYWHERE, names(frequent, "artist")},
        {SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_EVERYWHERE, ofAlbum},
        {SP_TOPLIST_TYPE_ALBUMS, norway, names(newest)},
        {SP_TOPLIST_TYPE_ARTISTS, norway, names(newest, "artist")},
        {SP_TOPLIST_TYPE_TRACKS, norway, ofAlbum},
        {SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_REGION_USER, names(starred["album"])},
        {SP_TOPLIST_TYPE_ARTISTS, SP_TOPLIST_REGION_USER, names(starred["artist"])},
        {SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER, names(starred["song"], "title")},
    };
    EXPECT_NE(lists[0].names, lists[3].names) << "or they are not told apart";
    for (const auto& list : lists) {
        EXPECT_THAT(toplist(list.type, list.region), ElementsAreArray(list.names))
            << list.type << ' ' << list.region;
    }
    // Other servers say how often each song was played.
    {
        const std::lock_guard<std::mutex> lock(mutex);
        plays = {{ofAlbum.at(1), 2}, {ofAlbum.at(2), 3}};
    }
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_EVERYWHERE),
                ElementsAre(ofAlbum[2], ofAlbum[1]));
}

void ConformanceOfRequests::expectSearchesAndBrowses(sp_track* track) {
    const auto found = session->found("x");
    const Reply result = answers["search3"]["searchResult3"];
    const Names artists = names(result["artist"]), albums = names(result["album"]),
                songs = names(result["song"], "title");
    ASSERT_EQ(sp_search_num_tracks(found.get()), static_cast<int>(songs.size()));
    ASSERT_EQ(sp_search_num_albums(found.get()), static_cast<int>(albums.size()));
    ASSERT_EQ(sp_search_num_artists(found.get()), static_cast<int>(artists.size()));
    for (std::size_t i = 0; i < songs.size(); ++i) {
        EXPECT_EQ(sp_track_name(sp_search_track(found.get(), static_cast<int>(i))), songs[i]);
    }
    EXPECT_EQ(sp_album_name(sp_search_album(found.get(), 0)), albums[0]);
    EXPECT_EQ(sp_artist_name(sp_search_artist(found.get(), 0)), artists[0]);

    sp_album* const album = sp_track_album(track);
    const std::shared_ptr<sp_albumbrowse> ofAlbum(
        sp_albumbrowse_create(session->get(), album, nullptr, nullptr), sp_albumbrowse_release);
    until([&] { return sp_albumbrowse_is_loaded(ofAlbum.get()); }, "an album");
    EXPECT_EQ(sp_albumbrowse_num_tracks(ofAlbum.get()),
              answers["getAlbum"]["album"]["songCount"].number());
    const std::shared_ptr<sp_artistbrowse> ofArtist(
        sp_artistbrowse_create(session->get(), sp_track_artist(track, 0), SP_ARTISTBROWSE_NO_TRACKS,
                               nullptr, nullptr),
        sp_artistbrowse_release);
    until([&] { return sp_artistbrowse_is_loaded(ofArtist.get()); }, "an artist");
    ASSERT_EQ(sp_artistbrowse_num_albums(ofArtist.get()), 1);
    EXPECT_EQ(sp_artistbrowse_album(ofArtist.get(), 0), album);

    const std::shared_ptr<sp_image> cover(
        sp_image_create(session->get(), sp_album_cover(album, SP_IMAGE_SIZE_NORMAL)),
        sp_image_release);
    until([&] { return sp_image_is_loaded(cover.get()); }, "a cover");
    EXPECT_EQ(sp_image_error(cover.get()), SP_ERROR_OTHER_PERMANENT) << "it is refused";
}

void ConformanceOfRequests::play(sp_track* track, const char* parameter) {
    session->ended = false;
    ASSERT_EQ(sp_session_player_load(session->get(), track), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_OK);
    until(
        [&] {
            const std::lock_guard<std::mutex> lock(mutex);
            return session->ended && hasAsked("scrobble", "time");
        },
        "playing");
    untilAsked("stream", parameter);
}

// Each change here is told in the interface's words.
void ConformanceOfRequests::expectLists() {
    sp_playlistcontainer* const container = sp_session_playlistcontainer(session->get());
    until([&] { return sp_playlistcontainer_num_playlists(container) == 1; }, "the playlists");
    sp_playlist* const shown = sp_playlistcontainer_playlist(container, 0);
    const Reply list = answers["getPlaylist"]["playlist"];
    EXPECT_EQ(sp_playlist_name(shown), list["name"].text());
    EXPECT_EQ(sp_playlist_get_description(shown), list["comment"].text());
    EXPECT_EQ(sp_user_canonical_name(sp_playlist_owner(shown)), list["owner"].text());
    Names songs;
    for (int i = 0; i < sp_playlist_num_tracks(shown); ++i) {
        songs.emplace_back(sp_track_name(sp_playlist_track(shown, i)));
    }
    EXPECT_THAT(songs, ElementsAreArray(names(list["entry"], "title")));

    Accounts accounts(makeSource({})->files(TestMusic::paths()).accounts, Accounts::First::nobody);
    ListStore store(accounts.connection());
    const ListRow row = store.find(links.listOf(mix)).value();
    const auto ofUser = [&](ListKind kind) { return store.ofUser("listener", kind).value(); };
    const auto ids = [&](const ListRow& of) { return itemsOf(store.entries(of)); };
    until([&] { return ids(ofUser(ListKind::starred)).size() == 2; }, "the stars");
    const std::vector<Id> before = ids(row);
    const Id other = links.link(SP_LINKTYPE_TRACK, "other");
    const struct {
        const char *method, *parameter;
        std::function<void()> change;
    } changes[] = {
        {"updatePlaylist", "name", [&] { store.rename(row, "Mixed"); }},
        {"updatePlaylist", "comment", [&] { store.describe(row, "green"); }},
        {"updatePlaylist", "public", [&] { store.share(row, false, false); }},
        {"updatePlaylist", "songIdToAdd",
         [&] {
             setItems(store, row, {before[0], before[1], other}, "listener");
         }},
        {"updatePlaylist", "songIndexToRemove",
         [&] { setItems(store, row, {before[1]}, "listener"); }},
        {"createPlaylist", "songId",
         [&] {
             setItems(store, row, {before[1], before[0]}, "listener");
         }},
        {"star", "id",
         [&] {
             store.insert(ofUser(ListKind::starred), 0, {{EntryKind::item, other, std::nullopt}},
                          "listener");
         }},
        {"unstar", "id",
         [&] {
             const ListRow starred = ofUser(ListKind::starred);
             store.removeItems(starred, {ids(starred).at(0)});
         }},
        {"createPlaylist", "name",
         [&] {
             const ListRow made = store.create(row.ownerId, "Made");
             store.insert(ofUser(ListKind::container), 0,
                          {{EntryKind::item, made.link, std::nullopt}}, "listener");
         }},
        // What is done while the server is asked is not undone by its answer.
        {"deletePlaylist", "id",
         [&] {
             const std::lock_guard<std::mutex> lock(mutex);
             whileAskedForList = [&] {
                 store.removeItems(ofUser(ListKind::container), {row.link});
             };
         }},
    };
    for (const auto& each : changes) {
        each.change();
        untilAsked(each.method, each.parameter);
    }
}

TEST_F(ConformanceOfRequests, IsThatOfAllThatIsAsked) {
    session.emplace();
    ASSERT_EQ(session->login("listener", "secret"), SP_ERROR_OK);
    const Reply song = answers["getSong"]["song"];
    const std::string link =
        "spotify:track:" + links.link(SP_LINKTYPE_TRACK, song["id"].text()).text();
    auto track = trackOf(link);
    until([&] { return sp_track_is_loaded(track.get()); }, "a link");
    EXPECT_EQ(sp_track_name(track.get()), song["title"].text());
    EXPECT_EQ(sp_track_duration(track.get()), 1000 * song["duration"].number());
    EXPECT_EQ(sp_track_index(track.get()), song["track"].number());
    EXPECT_EQ(sp_album_name(sp_track_album(track.get())), song["album"].text());
    EXPECT_EQ(sp_artist_name(sp_track_artist(track.get(), 0)), song["artist"].text());
    EXPECT_EQ(sp_session_num_friends(session->get()), 0) << "it does not say to this user";
    expectTopLists();
    expectSearchesAndBrowses(track.get());
    play(track.get(), "format");
    track.reset();
    session.reset();

    // Lists, friends, and what the server makes of music.
    isAdministrator = true;
    // NOLINTBEGIN(concurrency-mt-unsafe): no session is there
    setenv("SONOLET_SERVER_LOOK", "0.05", 1);
    setenv("SONOLET_SERVER_TRANSCODE", "1", 1);
    // NOLINTEND(concurrency-mt-unsafe)
    session.emplace();
    ASSERT_EQ(session->login("listener", "secret"), SP_ERROR_OK);
    until([&] { return sp_session_num_friends(session->get()) == 1; }, "a friend");
    EXPECT_STREQ(sp_user_canonical_name(sp_session_friend(session->get(), 0)), "ann");
    track = trackOf(link);
    play(track.get(), "maxBitRate");
    track.reset();
    expectLists();
    session.reset();

    // The server may still read what came last.
    const std::lock_guard<std::mutex> lock(mutex);
    std::set<std::string> methods;
    for (const auto& [method, parameters] : asked) {
        SCOPED_TRACE(method);
        expectDocumented(method, parameters);
        methods.insert(method);
    }
    EXPECT_EQ(methods.size(), documented.size()) << "not all of them are asked";
}

}  // namespace
}  // namespace sonolet::test
