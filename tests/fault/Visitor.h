#ifndef SONOLET_TESTS_FAULT_VISITOR_H
#define SONOLET_TESTS_FAULT_VISITOR_H

#include "../fakes/FakeHost.h"
#include "../fakes/FakeSpotify.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// A library with one handle of each kind, which every function answers, and links to them:
// "spotify:track" and so on.
struct Samples {
    Samples();

    FakeSpotify& spotify = FakeSpotify::get();
    sp_track* const track = spotify.add<sp_track>("spotify:track");
    sp_album* const album = spotify.add<sp_album>("spotify:album");
    sp_artist* const artist = spotify.add<sp_artist>("spotify:artist");
    sp_user* const user = spotify.add<sp_user>("user");
    sp_image* const image = spotify.add<sp_image>("image");
    sp_search* const search = spotify.add<sp_search>("search");
    sp_albumbrowse* const albumbrowse = spotify.add<sp_albumbrowse>("albumbrowse");
    sp_artistbrowse* const artistbrowse = spotify.add<sp_artistbrowse>("artistbrowse");
    sp_toplistbrowse* const toplistbrowse = spotify.add<sp_toplistbrowse>("toplistbrowse");
    sp_playlist* const playlist = spotify.add<sp_playlist>("spotify:playlist");
    sp_playlistcontainer* const container = spotify.add<sp_playlistcontainer>("container");
    sp_link* const link = spotify.add<sp_link>("link");

    // Completes every query and calls each of the library's callbacks once.
    void raiseAll();
};

// A page that uses everything it finds: reads, writes and calls each name of an object and of one
// object of each class that comes of it. It goes on when something fails, and writes down what
// nobody may answer.
class Visitor {
public:
    Visitor(FakeHost& itsHost, Samples& itsSamples, jsplugin_obj* itsPage);

    void connect();
    // Everything from the root on, with a session, listeners and handlers.
    void visitAll();
    // What events have brought since; it is garbage afterwards.
    void visitArrived();
    // Sound: deliveries, requests, every event of a backend.
    void play();
    void logout();

    // The object behind a path, or null.
    jsplugin_obj* find(const std::string& path);
    Answer call(jsplugin_obj* object, const std::string& name, const FakeHost::Values& values = {});

    std::vector<std::string> failures;   // exceptions, in order: "name: message"
    std::vector<std::string> undefined;  // answers out of the contract

private:
    struct Name {
        std::string name;
        std::string signature;
        bool isFunction;
        bool canSet;
    };

    void visit(jsplugin_obj* object, bool isConstructor = false);
    void visitName(jsplugin_obj* object, const Name& entry);
    FakeHost::Values argumentsOf(const Name& entry) const;
    Answer checked(const std::string& name, bool isSetter, const Answer& answer);

    FakeHost& host;
    Samples& samples;
    jsplugin_obj* const page;
    jsplugin_obj* listener = nullptr;
    jsplugin_obj* config = nullptr;
    jsplugin_obj* session = nullptr;
    jsplugin_obj* track = nullptr;
    jsplugin_obj* album = nullptr;
    jsplugin_obj* artist = nullptr;
    jsplugin_obj* playlist = nullptr;
    std::string link;  // what a text argument is
    std::vector<jsplugin_obj*> arrived;
    std::set<std::pair<std::string, bool>> seen;  // class, and whether an attribute held it
};

#endif
