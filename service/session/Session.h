#ifndef SONOLET_SERVICE_SESSION_SESSION_H
#define SONOLET_SERVICE_SESSION_SESSION_H

#include "catalogue/Scanner.h"
#include "faults/Faults.h"
#include "images/Images.h"
#include "lists/Playlists.h"
#include "objects/Library.h"
#include "objects/Track.h"
#include "player/Player.h"
#include "queries/Query.h"
#include "session/Storage.h"
#include "store/StatePaths.h"
#include "work/EventQueue.h"
#include "work/Worker.h"

#include "libspotify/api.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonolet::service {

// A failure that has a number in the interface.
class ServiceError final : public std::runtime_error {
public:
    ServiceError(sp_error errorCode, const std::string& text)
        : std::runtime_error(text), code(errorCode) {}
    sp_error number() const { return code; }

private:
    sp_error code;
};

// The one session of a process: who is logged in, what there is to play, and what plays.
//
// Threads: the operations belong to the thread that calls processEvents(). The scan, the checking
// of credentials and the player have threads of their own, which reach the owner through the event
// queue; music_delivery and end_of_track alone are called on the player's. No lock is held while a
// callback runs. A callback may call any operation: a processEvents() inside one does nothing, and
// after close() no further callback runs.
class Session : public std::enable_shared_from_this<Session> {
public:
    // Throws ServiceError for a configuration that cannot be used.
    explicit Session(const sp_session_config& config);

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Starts the scan. The session is known by its handle from here on.
    void start();

    // Joins every thread. The player is silent, the library empty from here on.
    void close();

    sp_error processEvents(int* nextTimeout);
    void* userdata() const { return userData; }
    const std::shared_ptr<Library>& library() const { return shelves; }
    Playlists& playlists() const { return *lists; }
    // Makes the catalogue again when this is a sign that it is damaged. Any thread.
    void rebuildDamaged(const DatabaseError& error);

    Accounts& accounts() const { return *shelves->accounts(); }

    sp_error login(const char* name, const char* password, bool remember, const char* blob);
    sp_error relogin();
    sp_error logout();
    sp_error forgetMe() const;
    std::optional<std::string> rememberedUser() const;
    sp_connectionstate connectionState() const;
    sp_user* user() const { return userHandle.get(); }
    int friendCount() const;
    sp_user* friendAt(int index) const;
    // Of the user, else where this machine is: two letters, or 0 for no country.
    int country() const;
    // What the locale says; 0 when it names no territory.
    static int homeCountry();
    sp_error setCacheSize(std::size_t megabytes) const;

    sp_error load(Track& track);
    sp_error play(bool on);
    sp_error seek(int offsetMs);
    sp_error unload();
    sp_error prefetch(Track& track);

    bool isStarred(const Track& track) const;
    sp_error setStarred(const std::vector<Id>& tracks, bool star);

    // `id` is 20 bytes, known or not.
    Ref<sp_image> image(const std::string& id) { return images->image(id); }

    // Has the worker look for the answer. The query is told once, by processEvents(): with the
    // answer, or with an error when the user logs out before. A closed session tells nobody.
    void ask(Ref<Query> query);

protected:
    ~Session();

private:
    using Check = std::function<std::optional<Account>(Accounts&)>;

    sp_session* handle();
    void log(std::string line);
    // What fails is told and leaves the caller going on.
    template <typename Action>
    void orLog(const char* consequence, Action action);
    template <typename... Parameters, typename... Arguments>
    void raise(void (*sp_session_callbacks::*callback)(sp_session*, Parameters...),
               Arguments... arguments);

    // Posts what a service would send: on a slow connection it comes later. Any thread.
    void answer(EventQueue::Event event);
    void releaseLate();
    void show(const Faults::Turn& turn);

    struct Opened {
        std::unique_ptr<Accounts> accounts;
        std::unique_ptr<Catalogue> catalogue;
    };
    Opened openDatabases();
    void openLibrary();
    // Goes back to the files of a disk that was full, once that is possible.
    void keepAgain();
    void useInQueries();
    void startScan();
    void startImages();
    void startPlayer();
    void checkCredentials(Check check, bool remember, bool issueBlob);
    void finishLogin(const Account& found, const std::string& blob);
    void endLogin(unsigned attempt,
                  const std::optional<Account>& found,
                  const std::string& blob,
                  sp_error error);
    void findAnswer(unsigned number, Query& query);
    void finishQuery(unsigned number, sp_error error);
    // The queries under way, finished with an error; who asked is yet to be told.
    std::vector<Ref<Query>> cancelQueries();
    void tellQueries(const std::vector<Ref<Query>>& cancelled) const;
    void lookForChanges();
    // True when there are others than before.
    bool refreshFriends();
    void losePlayToken();
    void stopPlaying();
    std::string filePath(Track& track) const;
    sp_error playable(Track& track) const;
    int timeout() const;

    // Constant after construction.
    const sp_session_callbacks callbacks;
    void* const userData;
    StatePaths paths;
    std::string music;
    std::unique_ptr<Storage> storage;
    const std::string token;  // names this session among those of an account

    EventQueue events;
    std::shared_ptr<Faults> faults;
    // Before this the player's sound is still on its way.
    std::atomic<Faults::Clock::time_point> soundFrom{};

    // State below is the owner thread's.
    std::shared_ptr<Library> shelves;
    std::shared_ptr<Playlists> lists;
    std::optional<Account> account;  // who is logged in
    Ref<sp_user> userHandle;
    std::vector<Ref<sp_user>> friends;
    unsigned loginAttempt = 0;               // an outcome of an earlier attempt is dropped
    std::map<unsigned, Ref<Query>> queries;  // under way, by number
    unsigned lastQuery = 0;
    std::multimap<Faults::Clock::time_point, EventQueue::Event> late;  // answers on their way
    bool loginPending = false;
    bool dispatching = false;
    bool closed = false;
    bool playing = false;
    int loadedDurationMs = 0;

    std::atomic<bool> rebuilding{false};        // the catalogue, from here to the end of the scan
    std::atomic<unsigned> cancelledQueries{0};  // up to this number nobody waits for an answer
    std::unique_ptr<QueryStore> queryStore;     // the worker's
    std::string queriedCatalogue;               // the worker's
    std::string queriedAccounts;                // the worker's
    Faults::Clock::time_point nextTryToKeep{};

    // The track whose end the player may report; set once load() has returned.
    std::mutex loadedMutex;
    std::optional<Id> loaded;

    std::unique_ptr<Player> player;
    std::unique_ptr<Scanner> scanner;
    std::unique_ptr<Worker> worker;
    std::shared_ptr<Images> images;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_session final : sonolet::service::Session {  // NOLINT(readability-identifier-naming)
    using Session::Session;
    ~sp_session() = default;
};

#endif
