// pages/spotify.d.ts and docs/script-interface.md against what the classes register.
#include "../fault/Visitor.h"
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
    const jspp::name_table table = jspp::__detail::inspection::names(object);
    for (const auto& [name, value] : jspp::__detail::inspection::readables(table)) {
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
declare function check<Outcome>(expected: Outcome): void;
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
        addRoot();
        addWrappers();
        addArrays();
    }

    void add(const std::string& declaration, jsplugin_obj* object) {
        ASSERT_NE(object, nullptr) << declaration;
        names[declaration] = namesOf(*jspp::__detail::private_record::of(object).self);
    }
    // The root and every object that an attribute of it answers.
    void addRoot() {
        add("Root", find("Spotify"));
        for (const std::string& name : names["Root"].all) {
            const Answer read = host->get(find("Spotify"), name);
            if (jspp::__detail::objects().is_object(read.value.object)) {
                add("Root[\"" + name + "\"]", read.value.object);
            }
        }
    }
    void addWrappers() {
        add("User", session("user").value.object);
        add("Playlistcontainer", session("Playlistcontainer").value.object);
        jsplugin_obj* const album = create("Album", "spotify:album");
        jsplugin_obj* const artist = create("Artist", "spotify:artist");
        for (const auto& [kind, values] : {std::pair("Track", Values{"spotify:track"}),
                                           {"Album", {"spotify:album"}},
                                           {"Artist", {"spotify:artist"}},
                                           {"Playlist", {"spotify:playlist"}},
                                           {"SpImage", {imageText}},
                                           {"Search", {"", 0, 0, 0, 0, 0, 0, 0, 0, 0, listener}},
                                           {"Albumbrowse", {album, listener}},
                                           {"Artistbrowse", {artist, 0, listener}},
                                           {"Toplistbrowse", {0, 0, "", listener}}}) {
            add(kind, call(std::string("Spotify.") + kind, "create", values).value.object);
        }
    }
    void addArrays() {
        jsplugin_obj* const list = create("Playlist", "spotify:playlist");
        add("StringArray", host->call(list, "subscribers").value.object);
        host->call(list, "addEventListener", {"TracksAddedEvent", listener});
        host->call(list, "addEventListener", {"TracksRemoved", listener});
        const auto [callbacks, owner] = samples.playlist->listeners.back();
        callbacks->tracks_added(samples.playlist, nullptr, 0, 0, owner);
        callbacks->tracks_removed(samples.playlist, nullptr, 0, owner);
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
    Samples samples;
    jsplugin_obj* const listener = host->function(page);
};

}  // namespace

TEST_F(DeclarationsTest, AreWhatTheClassesRegister) {
    std::ostringstream source;
    source << compare;
    for (const auto& [declaration, found] : names) {
        source << "check<Compare<Shape<Spotify." << declaration << ">, { " << found.shape
               << " }>>(\"the same\");\n";
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
    std::string check;
    for (const auto& script : std::filesystem::directory_iterator(PAGES_DIR "/conformance")) {
        check += contentsOf(script.path());
    }
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
