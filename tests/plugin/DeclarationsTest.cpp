// pages/spotify.d.ts and docs/script-interface.md against what the classes register.
#include "../pages/Command.h"
#include "PluginTest.h"
#include "jspp/_detail/private_record.h"

namespace {

// A script object's names, and how they are declared.
struct Names {
    std::string shape;
    Strings all;
};
Names namesOf(const jspp::interface& object) {
    Names names;
    const jspp::name_table table = object.names();
    for (const auto& [name, value] : table.all()) {
        names.all.push_back(name);
        const std::string readOnly = table.find_setter(name) ? "" : "readonly ";
        if (std::holds_alternative<jspp::name_table::function>(value)) {
            names.shape += name + ": 'function'; ";
        } else if (const auto* const number = std::get_if<double>(&value)) {
            names.shape +=
                readOnly + name + ": " + std::to_string(static_cast<int>(*number)) + "; ";
        } else if (const auto* const text = std::get_if<std::string>(&value)) {
            names.shape += readOnly + name + ": '" + *text + "'; ";
        } else {
            names.shape += readOnly + name + ": 'attribute'; ";
        }
    }
    if (table.any_getter) {
        names.shape += "[index: number]: 'attribute'";
    }
    return names;
}

constexpr char compare[] = R"ts(
type Kind<V> = null extends V ? "attribute"
    : V extends (...values: never[]) => unknown ? "function"
    : number extends V ? "attribute" : string extends V ? "attribute"
    : V extends number | string ? V : "attribute";
type Shape<T> = { [K in keyof T]: Kind<T[K]> };
type Same<A, B> = (<T>() => T extends A ? 1 : 2) extends (<T>() => T extends B ? 1 : 2) ? true : false;
type Compare<Declared, Registered> = Same<Declared, Registered> extends true ? "the same" : {
    undeclared: Exclude<keyof Registered, keyof Declared>;
    unregistered: Exclude<keyof Declared, keyof Registered>;
    different: { [K in keyof Declared & keyof Registered]:
        Same<Pick<Declared, K>, Pick<Registered, K>> extends true ? never : K
    }[keyof Declared & keyof Registered];
};
)ts";

// One object of every class, by the name of its declaration.
class DeclarationsTest : public PluginTest {
protected:
    DeclarationsTest() {
        createSession();
        for (const char* const name : {"Session", "SessionConfig", "Sonolet"}) {
            add(name, find(std::string("Spotify.") + name));
        }
        add("Root", find("Spotify"));
        addEnumerations();
        addWrappers();
        addArrays();
    }

    void add(const std::string& declaration, jsplugin_obj* object) {
        ASSERT_NE(object, nullptr) << declaration;
        names[declaration] = namesOf(*jspp::__detail::private_record::of(object).self);
    }
    void addEnumerations() {
        for (const auto& [attribute, declaration] :
             {std::pair("SP_SIGNUP_PAGE", "SignupPages"),
              {"SP_SIGNUP_FEATURE", "SignupFeatures"},
              {"SP_SIGNUP_ACTION", "SignupActions"},
              {"SP_ERROR", "ErrorCodes"},
              {"SP_PLAYLIST_TYPE", "PlaylistTypes"},
              {"SP_TRACK_AVAILABILITY", "TrackAvailabilities"},
              {"SP_ARTISTBROWSE_TYPE", "ArtistbrowseTypes"},
              {"SP_ALBUMTYPE", "AlbumTypes"},
              {"SP_IMAGE_FORMAT", "ImageFormats"},
              {"SP_RELATION_TYPE", "RelationTypes"},
              {"SP_TOPLIST_TYPE", "ToplistTypes"},
              {"SP_TOPLIST_REGION", "ToplistRegions"},
              {"SP_SEARCH_TYPE", "SearchTypes"},
              {"SP_PLUGIN_ERROR", "PluginErrors"}}) {
            add(declaration, find(std::string("Spotify.") + attribute));
        }
    }
    void addWrappers() {
        spotify.add<sp_track>("Track");
        spotify.add<sp_album>("Album");
        spotify.add<sp_artist>("Artist");
        spotify.add<sp_link>("Playlist");
        spotify.handles = {
            {"sp_session_user", {spotify.add<sp_user>("User")}},
            {"sp_session_playlistcontainer",
             {spotify.add<sp_playlistcontainer>("Playlistcontainer")}},
            {"sp_playlist_create", {playlist}},
            {"sp_image_create", {spotify.add<sp_image>("SpImage")}},
            {"sp_search_create", {spotify.add<sp_search>("Search")}},
            {"sp_albumbrowse_create", {spotify.add<sp_albumbrowse>("Albumbrowse")}},
            {"sp_artistbrowse_create", {spotify.add<sp_artistbrowse>("Artistbrowse")}},
            {"sp_toplistbrowse_create", {spotify.add<sp_toplistbrowse>("Toplistbrowse")}}};
        add("User", session("user").value.object);
        add("Playlistcontainer", session("Playlistcontainer").value.object);
        jsplugin_obj* const album = create("Album", "Album");
        jsplugin_obj* const artist = create("Artist", "Artist");
        for (const auto& [kind, values] : {std::pair("Track", Values{"Track"}),
                                           {"Album", {"Album"}},
                                           {"Artist", {"Artist"}},
                                           {"Playlist", {"Playlist"}},
                                           {"SpImage", {imageText}},
                                           {"Search", {"", 0, 0, 0, 0, 0, 0, 0, 0, 0, listener}},
                                           {"Albumbrowse", {album, listener}},
                                           {"Artistbrowse", {artist, 0, listener}},
                                           {"Toplistbrowse", {0, 0, "", listener}}}) {
            add(std::string(kind) + "Constructor", find(std::string("Spotify.") + kind));
            add(kind, call(std::string("Spotify.") + kind, "create", values).value.object);
        }
    }
    void addArrays() {
        jsplugin_obj* const list = create("Playlist", "Playlist");
        add("StringArray", host->call(list, "subscribers").value.object);
        host->call(list, "addEventListener", {"TracksAddedEvent", listener});
        host->call(list, "addEventListener", {"TracksRemoved", listener});
        const auto [callbacks, owner] = playlist->listeners.back();
        callbacks->tracks_added(playlist, nullptr, 0, 0, owner);
        callbacks->tracks_removed(playlist, nullptr, 0, owner);
        tick();
        ASSERT_EQ(host->calls.size(), 2U);
        add("TrackArray", host->calls[0].arguments[1].object);
        add("NumberArray", host->calls[1].arguments[1].object);
    }

    static void expectCompiles(const std::string& project) {
        const Outcome outcome = run({TSC, "--project", project}, {});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
    }

    std::map<std::string, Names> names;
    sp_playlist* const playlist = spotify.add<sp_playlist>("playlist");
    jsplugin_obj* const listener = host->function(page);
};

}  // namespace

TEST_F(DeclarationsTest, AreWhatTheClassesRegister) {
    std::ostringstream source;
    source << compare;
    for (const auto& [declaration, found] : names) {
        source << "const " << declaration << ": Compare<Shape<Spotify." << declaration << ">, { "
               << found.shape << " }> = \"the same\";\n";
    }
    writeTo(WORK_DIR "/registered.ts", source.str());
    writeTo(WORK_DIR "/tsconfig.json",
            "{ \"extends\": \"" PAGES_DIR
            "/tsconfig.json\", \"include\": [\"registered.ts\", \"" PAGES_DIR "/spotify.d.ts\"] }");
    expectCompiles(WORK_DIR);
}

TEST_F(DeclarationsTest, AreWhatThePagesUse) {
    expectCompiles(PAGES_DIR);
    expectCompiles(PAGES_DIR "/conformance");
}

TEST_F(DeclarationsTest, AreDescribedAndCheckedNameForName) {
    const std::string guide = contentsOf(PAGES_DIR "/../docs/script-interface.md");
    const std::string check = contentsOf(PAGES_DIR "/conformance/conformance.js");
    for (const auto& [declaration, found] : names) {
        for (const std::string& name : found.all) {
            EXPECT_NE(guide.find('`' + name), std::string::npos) << declaration << '.' << name;
            const bool isFunction = found.shape.find(name + ": 'function'") != std::string::npos;
            EXPECT_TRUE(!isFunction || check.find(' ' + name + '(') != std::string::npos ||
                        check.find('"' + name + '"') != std::string::npos)
                << declaration << '.' << name << " is not checked";
        }
    }
}
