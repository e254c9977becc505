#ifndef SONOLET_TESTS_FAKES_FAKESPOTIFY_H
#define SONOLET_TESTS_FAKES_FAKESPOTIFY_H

#include "libspotify/api.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A handle as the library keeps it: `references` are the client's, and never negative.
struct FakeHandle {
    std::string label;
    int references = 0;
};

// The library's own handles. A null text is answered as null.
// NOLINTBEGIN(readability-identifier-naming): named by the library's interface
struct sp_artist : FakeHandle {
    const char* name = "Artist";
    const byte* portrait = nullptr;
};
struct sp_album : FakeHandle {
    const char* name = "Album";
    sp_artist* artist = nullptr;
    const byte* cover = nullptr;
};
struct sp_track : FakeHandle {
    const char* name = "Track";
    sp_album* album = nullptr;
    std::vector<sp_artist*> artists;
    int duration = 10000;
};
struct sp_user : FakeHandle {
    const char* canonicalName = "canonical";
    const char* displayName = "display";
    const char* fullName = "full";
    const char* picture = "http://picture";
};
struct sp_link : FakeHandle {
    sp_track* track = nullptr;
    sp_album* album = nullptr;
    sp_artist* artist = nullptr;
};
struct sp_session : FakeHandle {
    const sp_session_callbacks* callbacks = nullptr;
    bool released = false;
};
// NOLINTEND(readability-identifier-naming)

// The client library in this process. Never destroyed: the plug-in uses it before main.
//
// A null or unknown handle, a release without a reference, a dead session, and a call from another
// thread than the one that made the session stop the process with a message.
class FakeSpotify {
public:
    static FakeSpotify& get();

    // Forgets sessions, handles, scripted answers and the record. Handles must be balanced.
    void reset();
    // Empty when every reference that was taken has been given back; else says which was not.
    std::string imbalance() const;

    // Things to be found. A link text leads to the handle; tracks have a new album and artist.
    sp_track* addTrack(const std::string& link);
    sp_album* addAlbum(const std::string& link);
    sp_artist* addArtist(const std::string& link);
    sp_user* addUser(const std::string& label);

    // The session made last; stops the process when there is none.
    sp_session* session() const;
    const sp_session_callbacks& callbacks() const { return *session()->callbacks; }
    // Offers frames as the library does, holding off while a track is loaded or unloaded.
    int deliver(const void* frames, int count, int rate = 44100, int channels = 2, int type = 0);

    // The calls so far that begin with `prefix`, with their arguments: "sp_session_player_seek(7)".
    std::vector<std::string> callsTo(const std::string& prefix) const;

    // Written by the tests.
    std::map<std::string, int> answers;  // number, flag or error of a function; 0 where missing
    std::map<std::string, const char*> texts;  // null where missing
    std::string buildId = "fake build";
    sp_user* user = nullptr;
    std::vector<sp_user*> friends;
    int nextTimeout = 1000;
    std::function<void()> duringProcessEvents;
    std::function<void()> duringPlayerLoad;  // the library has switched to the new track

    // Read by the tests.
    std::vector<std::string> calls;
    int sessionsCreated = 0;
    int sessionsReleased = 0;
    std::map<std::string, std::string> config;  // as the last sp_session_create was given it
    int linksOut = 0;                           // made and not released

    // For the library's own functions.
    template <typename... Arguments>
    int called(const char* function, const Arguments&... arguments);
    sp_error count(const char* function, FakeHandle* handle, int change);
    sp_error createSession(const sp_session_config* settings, sp_session** result);
    sp_link* makeLink(const char* text);
    std::mutex deliveryMutex;  // held during a delivery, and while load and unload switch tracks

private:
    void record(const std::string& call);

    std::vector<FakeHandle*> handles;
    std::map<std::string, sp_link> links;
    std::vector<sp_session*> sessions;
    std::thread::id thread;
};

#endif
