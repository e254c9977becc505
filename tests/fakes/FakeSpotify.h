#ifndef SONOLET_TESTS_FAKES_FAKESPOTIFY_H
#define SONOLET_TESTS_FAKES_FAKESPOTIFY_H

#include "libspotify/api.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <typeindex>
#include <vector>

// A handle as the library keeps it: `references` are the client's, and never negative.
struct FakeHandle {
    virtual ~FakeHandle() = default;
    std::string label;
    int references = 0;
    int registrations = 0;  // callbacks added and not removed
};

// One that calls back: an object with its listeners, or a query with its pending requests.
template <typename Callbacks>
struct FakeSource : FakeHandle {
    std::vector<std::pair<Callbacks*, void*>> listeners;
};

// NOLINTBEGIN(readability-identifier-naming): named by the library's interface
struct sp_artist : FakeHandle {};
struct sp_album : FakeHandle {};
struct sp_track : FakeHandle {};
struct sp_user : FakeHandle {};
struct sp_link : FakeHandle {
    FakeHandle* target = nullptr;
};
struct sp_image : FakeSource<image_loaded_cb> {};
struct sp_search : FakeSource<search_complete_cb> {};
struct sp_albumbrowse : FakeSource<albumbrowse_complete_cb> {};
struct sp_artistbrowse : FakeSource<artistbrowse_complete_cb> {};
struct sp_toplistbrowse : FakeSource<toplistbrowse_complete_cb> {};
struct sp_playlist : FakeSource<sp_playlist_callbacks> {};
struct sp_playlistcontainer : FakeSource<sp_playlistcontainer_callbacks> {};
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

    // A handle to be found by a link of that text.
    template <typename Kind>
    Kind* add(const std::string& link) {
        auto* handle = new Kind;  // stays allocated, so that a late use is told from a new handle
        handle->label = link;
        made.push_back(handle);
        links[link].target = handle;
        return handle;
    }

    // The session made last; stops the process when there is none.
    sp_session* session() const;
    const sp_session_callbacks& callbacks() const { return *session()->callbacks; }
    // Offers stereo frames as the library does, holding off while a track is loaded or unloaded.
    int deliver(const void* frames, int count);

    // The calls so far that begin with `prefix`, with their arguments: "sp_session_player_seek(7)".
    std::vector<std::string> callsTo(const std::string& prefix) const;

    // What a function answers, by its name; 0, null and nothing where missing. A function with an
    // index answers that element of its handles.
    std::map<std::string, int> answers;
    std::map<std::string, const char*> texts;
    std::map<std::string, std::vector<FakeHandle*>> handles;
    std::vector<std::string> subscribers;
    // Where nothing is scripted for a function: a handle of that kind, a text, 1 and true.
    std::map<std::type_index, FakeHandle*> samples;
    const char* sampleText = nullptr;
    int sampleNumber = 0;
    std::string buildId = "fake build";
    std::function<void()> duringProcessEvents;
    std::function<void()> duringPlayerLoad;  // the library has switched to the new track
    std::function<void()> afterExit;         // the plug-in's exit handlers have run

    // Read by the tests.
    std::vector<std::string> calls;
    bool keepsCalls = true;
    int sessionsCreated = 0;
    int sessionsReleased = 0;

    // For the library's own functions.
    template <typename... Arguments>
    void called(const char* function, const Arguments&... arguments);
    sp_error count(const char* function, FakeHandle* handle, int change);
    sp_session* addSession(const sp_session_callbacks* callbacks);
    sp_link* linkTo(const char* text);
    std::mutex deliveryMutex;  // held during a delivery, and while load and unload switch tracks

private:
    std::vector<FakeHandle*> made;
    std::map<std::string, sp_link> links;
    sp_session* lastSession = nullptr;
    std::thread::id thread;
};

#endif
