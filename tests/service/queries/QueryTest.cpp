// Searches and browses through the interface: when they are told, and what they hand out.

#include "TestMusic.h"
#include "TestSession.h"
#include "accounts/Accounts.h"
#include "accounts/ListStore.h"

namespace sonolet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

class QueryTest : public testing::Test {
protected:
    void SetUp() override {
        music.add("1.wav", "TITLE=Late|ARTIST=Ann|ALBUM=Best|DISCNUMBER=2|TRACKNUMBER=1|DATE=2001|"
                           "COPYRIGHT=(c) 2001 Ann");
        music.add("2.wav", "TITLE=Early|ARTIST=Ann|ALBUM=Best|TRACKNUMBER=2|DATE=2001|"
                           "COPYRIGHT=(c) 2001 Ann");
        music.add("3.wav", "TITLE=Opener|ARTIST=Ann|ALBUM=Best|TRACKNUMBER=1|DATE=2001|"
                           "COPYRIGHT=(c) 1999 Bob");
        music.add("4.wav", "TITLE=Guest|ARTIST=Ann|ALBUMARTIST=Bob|ALBUM=Bobs|DATE=1990");
        music.add("5.wav", "TITLE=Debut|ARTIST=Ann|ALBUM=Start|DATE=1995");
        session.emplace(TestSession::State::Scanned);
    }

    // Its completion function notes the name.
    sp_search* search(const char* query, const char* name) const {
        const auto note = [](sp_search*, void* data) {
            completed.emplace_back(static_cast<const char*>(data));
        };
        return sp_search_create(session->get(), query, 0, 20, 0, 20, 0, 20, 0, 20,
                                SP_SEARCH_STANDARD, note, const_cast<char*>(name));
    }
    template <typename Result, typename Item>
    static void list(Names& names,
                     Result* result,
                     int (*count)(Result*),
                     Item* (*item)(Result*, int),
                     const char* (*name)(Item*)) {
        for (int index = 0; index < count(result); ++index) {
            names.emplace_back(name(item(result, index)));
        }
        EXPECT_EQ(item(result, -1), nullptr);
        EXPECT_EQ(item(result, count(result)), nullptr);
    }
    Names toplist(sp_toplisttype type, int region, const char* user = nullptr) {
        sp_toplistbrowse* toplistbrowse = sp_toplistbrowse_create(
            session->get(), type, static_cast<sp_toplistregion>(region), user, nullptr, nullptr);
        EXPECT_TRUE(session->until([&] { return sp_toplistbrowse_is_loaded(toplistbrowse); }));
        error = sp_toplistbrowse_error(toplistbrowse);
        Names names;
        list(names, toplistbrowse, sp_toplistbrowse_num_tracks, sp_toplistbrowse_track,
             sp_track_name);
        list(names, toplistbrowse, sp_toplistbrowse_num_albums, sp_toplistbrowse_album,
             sp_album_name);
        list(names, toplistbrowse, sp_toplistbrowse_num_artists, sp_toplistbrowse_artist,
             sp_artist_name);
        sp_toplistbrowse_release(toplistbrowse);
        return names;
    }
    Names artistbrowse(sp_artist* artist, int type) {
        sp_artistbrowse* browse = sp_artistbrowse_create(
            session->get(), artist, static_cast<sp_artistbrowse_type>(type), nullptr, nullptr);
        EXPECT_TRUE(session->until([&] { return sp_artistbrowse_is_loaded(browse); }));
        error = sp_artistbrowse_error(browse);
        EXPECT_EQ(sp_artistbrowse_artist(browse), artist);
        Names names;
        list(names, browse, sp_artistbrowse_num_albums, sp_artistbrowse_album, sp_album_name);
        list(names, browse, sp_artistbrowse_num_tophit_tracks, sp_artistbrowse_tophit_track,
             sp_track_name);
        sp_artistbrowse_release(browse);
        return names;
    }

    static inline Names completed;
    const TestMusic music;
    std::optional<TestSession> session;
    sp_error error = SP_ERROR_OK;
};

TEST_F(QueryTest, IsToldOnceInOrderEvenWhenReleasedBefore) {
    completed.clear();
    EXPECT_EQ(search(nullptr, ""), nullptr);
    sp_search* first = search("ann", "first");
    EXPECT_FALSE(sp_search_is_loaded(first));
    EXPECT_EQ(sp_search_error(first), SP_ERROR_IS_LOADING);
    EXPECT_EQ(sp_search_release(search("best", "released")), SP_ERROR_OK);
    sp_search* untold = sp_search_create(session->get(), "ann", 0, 1, -1, 0, 0, 0, 0, 0,
                                         SP_SEARCH_STANDARD, nullptr, nullptr);
    EXPECT_EQ(sp_search_release(search("\"", "last")), SP_ERROR_OK);
    EXPECT_THAT(completed, IsEmpty()) << "not before the owner asks";
    ASSERT_TRUE(session->until([] { return completed.size() == 3; }));
    EXPECT_THAT(completed, ElementsAre("first", "released", "last"));
    EXPECT_EQ(sp_search_error(untold), SP_ERROR_INVALID_INDATA) << "an offset before the first";

    EXPECT_STREQ(sp_search_query(first), "ann");
    ASSERT_EQ(sp_search_num_tracks(first), 5);
    EXPECT_EQ(sp_search_total_tracks(first), 5);
    EXPECT_EQ(sp_search_num_albums(first), 2);
    EXPECT_EQ(sp_search_num_artists(first), 1);
    sp_track* track = sp_search_track(first, 0);
    EXPECT_EQ(trackOf(TestMusic::link(sp_track_name(track))).get(), track)
        << "the same handle as its link's";
    sp_search_release(first);
    sp_search_release(untold);
}

TEST_F(QueryTest, EndsWithAnErrorAtLogout) {
    completed.clear();
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    sp_search* pending = search("ann", "pending");
    sp_search_release(search("ann", "released"));
    EXPECT_EQ(sp_session_logout(session->get()), SP_ERROR_OK);
    EXPECT_TRUE(sp_search_is_loaded(pending));
    sp_search* after = search("ann", "after");
    ASSERT_TRUE(session->until([] { return completed.size() == 3; }));
    EXPECT_THAT(completed, ElementsAre("pending", "released", "after"));
    EXPECT_EQ(sp_search_error(pending), SP_ERROR_OTHER_TRANSIENT);
    EXPECT_EQ(sp_search_num_tracks(pending), 0);
    EXPECT_EQ(sp_search_error(after), SP_ERROR_OK) << "asked by nobody in particular";

    completed.clear();
    sp_search* orphan = search("ann", "orphan");
    session.reset();
    EXPECT_THAT(completed, IsEmpty()) << "nobody is left to tell";
    EXPECT_TRUE(sp_search_is_loaded(orphan));
    EXPECT_EQ(sp_search_error(orphan), SP_ERROR_OTHER_TRANSIENT);
    for (sp_search* result : {pending, after, orphan}) {
        EXPECT_EQ(sp_search_release(result), SP_ERROR_OK);
    }
}

TEST_F(QueryTest, BrowsesAlbumsAndArtists) {
    const auto late = trackOf(TestMusic::link("Late"));
    sp_album* album = sp_track_album(late.get());
    EXPECT_EQ(sp_albumbrowse_create(session->get(), nullptr, nullptr, nullptr), nullptr);
    sp_albumbrowse* browse = sp_albumbrowse_create(session->get(), album, nullptr, nullptr);
    EXPECT_EQ(sp_albumbrowse_album(browse), album);
    ASSERT_TRUE(session->until([&] { return sp_albumbrowse_is_loaded(browse); }));
    Names names;
    list(names, browse, sp_albumbrowse_num_tracks, sp_albumbrowse_track, sp_track_name);
    EXPECT_THAT(names, ElementsAre("Opener", "Early", "Late"));
    EXPECT_EQ(sp_albumbrowse_artist(browse), sp_track_artist(late.get(), 0));
    ASSERT_EQ(sp_albumbrowse_num_copyrights(browse), 2) << "each once";
    EXPECT_STREQ(sp_albumbrowse_copyright(browse, 0), "(c) 1999 Bob");
    EXPECT_EQ(sp_albumbrowse_copyright(browse, 2), nullptr);
    sp_albumbrowse_release(browse);

    sp_artist* ann = sp_track_artist(late.get(), 0);
    sp_track* starred[] = {late.get()};
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    ASSERT_EQ(sp_track_set_starred(session->get(), starred, 1, true), SP_ERROR_OK);
    EXPECT_THAT(artistbrowse(ann, SP_ARTISTBROWSE_NO_TRACKS), ElementsAre("Start", "Best", "Bobs"))
        << "her own by year, then the one she is on";
    EXPECT_THAT(artistbrowse(ann, SP_ARTISTBROWSE_NO_ALBUMS),
                ElementsAre("Late", "Guest", "Debut", "Opener", "Early"));
    EXPECT_EQ(artistbrowse(ann, SP_ARTISTBROWSE_FULL).size(), 8U);
    EXPECT_THAT(artistbrowse(ann, 3), IsEmpty());
    EXPECT_EQ(error, SP_ERROR_INVALID_INDATA);
    const auto nobody = linkOf("spotify:artist:0000000000000000000000");
    EXPECT_THAT(artistbrowse(sp_link_as_artist(nobody.get()), SP_ARTISTBROWSE_FULL), IsEmpty());
    EXPECT_EQ(error, SP_ERROR_OTHER_PERMANENT);
}

TEST_F(QueryTest, ListsWhatUsersAndCountriesPlay) {
    constexpr int norway = 'N' << 8 | 'O';
    const auto idOf = [](const char* title) {
        return *service::Id::fromText(TestMusic::link(title).substr(sizeof("spotify:track:") - 1));
    };
    ASSERT_EQ(run("echo secret | " SONOLET_USER " add Kari").status, 0);
    ASSERT_EQ(run(SONOLET_USER " country kari no").status, 0);
    EXPECT_NE(run(SONOLET_USER " country kari Norway").status, 0);
    {
        service::Accounts accounts(TestMusic::paths().accountsFile());
        for (const char* title : {"Late", "Late", "Late", "Early", "Debut"}) {
            accounts.recordPlay(accounts.find("kari")->id, idOf(title));
        }
        accounts.recordPlay(accounts.find("listener")->id, idOf("Early"));
        service::ListStore lists(accounts.connection());
        lists.insert(*lists.ofUser("listener", service::ListKind::starred), 0,
                     {{service::EntryKind::item, idOf("Guest"), {}}}, "listener");
    }
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_EVERYWHERE),
                ElementsAre("Guest", "Late", "Early", "Debut"));
    for (const auto& [title, least, most] : {std::tuple("Late", 100, 100), {"Early", 1, 99}}) {
        const int popularity = sp_track_popularity(trackOf(TestMusic::link(title)).get());
        EXPECT_TRUE(popularity >= least && popularity <= most) << title << popularity;
    }
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_REGION_EVERYWHERE),
                ElementsAre("Best", "Bobs", "Start"));
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_ARTISTS, SP_TOPLIST_REGION_EVERYWHERE), ElementsAre("Ann"));
    const Names karis = {"Late", "Debut", "Early"};
    EXPECT_EQ(toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER, "KARI"), karis);
    EXPECT_EQ(toplist(SP_TOPLIST_TYPE_TRACKS, norway), karis);
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_TRACKS, 'F' << 8 | 'R'), IsEmpty());
    EXPECT_EQ(error, SP_ERROR_OK);
    EXPECT_THAT(toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER), IsEmpty());
    EXPECT_EQ(error, SP_ERROR_PERMISSION_DENIED) << "whose?";
    toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER, "stranger");
    EXPECT_EQ(error, SP_ERROR_NO_SUCH_USER);
    toplist(SP_TOPLIST_TYPE_TRACKS, 2);
    EXPECT_EQ(error, SP_ERROR_INVALID_INDATA);

    ASSERT_EQ(session->login("kari", "secret"), SP_ERROR_OK);
    EXPECT_EQ(sp_session_user_country(session->get()), norway);
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    for (const auto& [locale, country] :
         {std::pair("nn_NO.UTF-8", norway), {"C.UTF-8", 0}, {"", 0}}) {
        for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
            setenv(name, locale, 1);  // NOLINT(concurrency-mt-unsafe): nobody else reads it here
        }
        EXPECT_EQ(sp_session_user_country(session->get()), country) << locale;
        EXPECT_EQ(toplist(SP_TOPLIST_TYPE_TRACKS, country).size(), 4U) << "here, or everywhere";
        EXPECT_EQ(toplist(SP_TOPLIST_TYPE_TRACKS, norway).size(), country == norway ? 4U : 3U);
    }
    ASSERT_EQ(session->login("kari", "secret"), SP_ERROR_OK);
    EXPECT_EQ(toplist(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER), karis);
}

}  // namespace
}  // namespace sonolet::test
