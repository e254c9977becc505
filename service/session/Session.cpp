#include "session/Session.h"

#include "accounts/PlaylistFiles.h"
#include "objects/User.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::size_t longestUserAgent = 255;
constexpr char cacheSetting[] = "cache_megabytes";

// How often changes that other processes make are looked for, in milliseconds.
constexpr int restingTimeout = 5000;
constexpr int loggedInTimeout = 1000;

void require(bool condition, sp_error error, const char* text) {
    if (!condition) {
        throw ServiceError(error, text);
    }
}

const sp_session_callbacks& checked(const sp_session_config& config) {
    require(config.api_version == SPOTIFY_API_VERSION, SP_ERROR_BAD_API_VERSION,
            "the program was made for another version of the interface");
    require(config.application_key != nullptr && config.application_key_size > 0,
            SP_ERROR_BAD_APPLICATION_KEY, "there is no application key");
    require(config.user_agent != nullptr && *config.user_agent != '\0' &&
                strnlen(config.user_agent, longestUserAgent + 1) <= longestUserAgent,
            SP_ERROR_BAD_USER_AGENT, "the user agent must have 1 to 255 bytes");
    require(config.callbacks != nullptr, SP_ERROR_MISSING_CALLBACK, "there are no callbacks");
    return *config.callbacks;
}

// What the accounts' file holds exists nowhere else: a damaged one is kept, and whoever started the
// program is told even if nobody reads the log.
std::unique_ptr<Accounts> openAccounts(const std::string& file, std::string& complaint) {
    try {
        auto accounts = std::make_unique<Accounts>(file);
        accounts->connection().check();
        return accounts;
    } catch (const DatabaseError& error) {
        if (!error.damaged()) {
            throw;
        }
        const std::string aside = Database::setAside(error, Database::Aside::every);
        complaint = std::string(error.what()) + "; ";
        complaint += aside.empty() ? "it is whole again"
                                   : "it is kept as " + aside +
                                         " and new accounts are begun. To read what can still be "
                                         "read of it: sqlite3 " +
                                         aside + " .recover";
        std::fprintf(stderr, "libspotify: %s\n", complaint.c_str());
    }
    return std::make_unique<Accounts>(file);
}

}  // namespace

Session::Session(const sp_session_config& config)
    : callbacks(checked(config)), userData(config.userdata), token(randomText(16)), events([this] {
          if (callbacks.notify_main_thread != nullptr) {
              callbacks.notify_main_thread(handle());
          }
      }) {
    try {
        faults = std::make_shared<Faults>(Faults::fromEnvironment());
    } catch (const std::invalid_argument& error) {
        throw ServiceError(SP_ERROR_API_INITIALIZATION_FAILED,
                           std::string("SONOLET_FAULT: ") + error.what());
    }
    try {
        paths = StatePaths::prepare(config.settings_location, config.cache_location);
        music = musicFolder();
        openLibrary();
        lists = std::make_shared<Playlists>(
            shelves, [this](EventQueue::Event event) { events.post(std::move(event)); },
            !config.initially_unload_playlists);
    } catch (const std::exception& error) {
        throw ServiceError(SP_ERROR_API_INITIALIZATION_FAILED, error.what());
    }
}

Session::~Session() = default;

sp_session* Session::handle() {
    return static_cast<sp_session*>(this);
}

Session::Opened Session::openDatabases() {
    std::string complaint;
    Opened opened;
    opened.accounts = openAccounts(storage->accounts(), complaint);
    if (!complaint.empty()) {
        log(complaint);
    }
    opened.catalogue = Catalogue::openOrBegin(storage->catalogue(),
                                              [this](std::string line) { log(std::move(line)); });
    return opened;
}

void Session::openLibrary() {
    log("Settings in " + paths.settings + ", cache in " + paths.cache + ", music in " + music);
    storage = std::make_unique<Storage>(paths.accountsFile(), paths.catalogueFile(music));
    Opened opened;
    try {
        opened = openDatabases();
    } catch (const std::exception& error) {
        if (!Storage::isNoRoom(error)) {
            throw;
        }
        log(std::string("Nothing can be kept until there is room: ") + error.what());
        storage->moveToMemory();
        opened = openDatabases();
    }
    shelves = std::make_shared<Library>(std::move(opened.catalogue), std::move(opened.accounts));
    shelves->setFaults(faults);
}

void Session::keepAgain() {
    constexpr std::chrono::seconds pause(1);
    const Faults::Clock::time_point now = Faults::Clock::now();
    if (storage->isKept() || now < nextTryToKeep) {
        return;
    }
    nextTryToKeep = now + pause;
    auto onDisk = std::make_unique<Storage>(paths.accountsFile(), paths.catalogueFile(music));
    storage.swap(onDisk);
    Opened opened;
    try {
        opened = openDatabases();
    } catch (const std::exception&) {
        storage.swap(onDisk);
        return;
    }
    log("There is room again: what changes is kept");
    scanner.reset();
    const auto before = shelves->exchange(std::move(opened.catalogue), std::move(opened.accounts));
    lists->reopen();
    account = lists->account();
    useInQueries();
    images->setCatalogue(storage->catalogue());
    startScan();
    // The worker may still be in what is in memory.
    worker->post([inMemory = std::shared_ptr<Storage>(std::move(onDisk))] {});
}

// Has the worker look for answers there.
void Session::useInQueries() {
    worker->post([this, catalogue = storage->catalogue(), accountsFile = storage->accounts()] {
        queryStore.reset();
        queriedCatalogue = catalogue;
        queriedAccounts = accountsFile;
    });
}

void Session::start() {
    worker = std::make_unique<Worker>();
    useInQueries();
    startImages();
    startPlayer();
    startScan();
}

void Session::startScan() {
    ScanEvents scanEvents;
    scanEvents.log = [this](std::string line) { log(std::move(line)); };
    if (storage->isKept()) {
        scanEvents.playlistFiles = [this](const std::vector<std::string>& files,
                                          const StopFlag& stop) {
            PlaylistFiles importer(
                music, paths.catalogueFile(music), paths.accountsFile(),
                [this](std::string line) { log(std::move(line)); }, stop);
            importer.update(files);
        };
    }
    scanEvents.finished = [this](bool) {
        events.post([this] {
            // The last changes may be younger than the last look.
            shelves->refreshCatalogue();
            shelves->setScanned();
            rebuilding = false;
            images->catalogueChanged();
            lists->tellMetadata();
            raise(&sp_session_callbacks::metadata_updated);
        });
    };
    scanner = std::make_unique<Scanner>(music, storage->catalogue(), std::move(scanEvents));
}

void Session::startImages() {
    const ImageLoader::Log logLine = [this](std::string line) { log(std::move(line)); };
    auto loader = std::make_unique<ImageLoader>(paths.cache, storage->catalogue(), music, logLine,
                                                worker->stopFlag());
    images = std::make_shared<Images>(
        std::move(loader), shelves, *worker,
        [this](EventQueue::Event event) { answer(std::move(event)); }, logLine);
    const std::string megabytes = accounts().setting(cacheSetting).value_or("0");
    images->setCacheSize(std::strtoull(megabytes.c_str(), nullptr, 10));
}

void Session::startPlayer() {
    PlayerEvents playerEvents;
    playerEvents.deliver = [this](const AudioFormat& format, const void* frames, int count) {
        if (callbacks.music_delivery == nullptr) {
            return count;
        }
        if (faults->isOffline() || Faults::Clock::now() < soundFrom.load()) {
            return 0;
        }
        const sp_audioformat delivered = {SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, format.sampleRate,
                                          format.channels};
        return callbacks.music_delivery(handle(), &delivered, frames, count);
    };
    playerEvents.endOfTrack = [this] {
        std::optional<Id> ended;
        {
            const std::lock_guard<std::mutex> lock(loadedMutex);
            ended = loaded;
        }
        events.post([this, ended] {
            if (ended && account) {
                accounts().recordPlay(account->id, *ended);
            }
        });
        if (callbacks.end_of_track != nullptr) {
            callbacks.end_of_track(handle());
        }
    };
    playerEvents.streamingError = [this](sp_error error, const std::string& why) {
        log(why);
        events.post([this, error] {
            playing = false;
            raise(&sp_session_callbacks::streaming_error, error);
        });
    };
    playerEvents.log = [this](std::string line) { log(std::move(line)); };
    player = std::make_unique<Player>(std::move(playerEvents));
}

void Session::close() {
    closed = true;
    // Each joins its thread; what those still post is dropped with the queue.
    player.reset();
    scanner.reset();
    worker.reset();
    if (images != nullptr) {
        images->close();
    }
    events.close();
    late.clear();
    queryStore.reset();
    cancelQueries();
    account.reset();
    userHandle = {};
    friends.clear();
    lists->close();
    shelves->close();
}

void Session::log(std::string line) {
    if (callbacks.log_message != nullptr) {
        events.post(
            [this, line = std::move(line)] { callbacks.log_message(handle(), line.c_str()); });
    }
}

template <typename Action>
void Session::orLog(const char* consequence, Action action) {
    try {
        action();
    } catch (const std::exception& error) {
        log(std::string(consequence) + ": " + error.what());
    }
}

template <typename... Parameters, typename... Arguments>
void Session::raise(void (*sp_session_callbacks::*callback)(sp_session*, Parameters...),
                    Arguments... arguments) {
    if (!closed && callbacks.*callback != nullptr) {
        (callbacks.*callback)(handle(), arguments...);
    }
}

sp_error Session::processEvents(int* nextTimeout) {
    if (!dispatching) {
        // A callback may release the session.
        const std::shared_ptr<Session> keep = shared_from_this();
        dispatching = true;
        try {
            lookForChanges();
        } catch (const std::exception& error) {
            log(error.what());
        }
        for (const Faults::Turn& turn : faults->due()) {
            events.post([this, turn] { show(turn); });
        }
        releaseLate();
        // What the events themselves post waits for the next call, so that this one ends.
        for (std::size_t waiting = events.size(); waiting > 0 && !closed; --waiting) {
            const EventQueue::Event event = events.pop();
            try {
                event();
            } catch (const std::exception& error) {
                log(error.what());
            }
        }
        dispatching = false;
    }
    if (nextTimeout != nullptr) {
        *nextTimeout = timeout();
    }
    return SP_ERROR_OK;
}

int Session::timeout() const {
    if (events.size() > 0) {
        return 0;
    }
    using std::chrono::milliseconds;
    Faults::Clock::duration pause = milliseconds(account ? loggedInTimeout : restingTimeout);
    if (const auto next = faults->untilNext()) {
        pause = std::min(pause, *next);
    }
    if (!late.empty()) {
        pause = std::min(pause, late.begin()->first - Faults::Clock::now());
    }
    return static_cast<int>(std::max<milliseconds::rep>(
        std::chrono::duration_cast<milliseconds>(pause).count() + 1, 0));
}

// ---- Faults ----

void Session::answer(EventQueue::Event event) {
    const Faults::Clock::duration delay = faults->delay();
    const Faults::Clock::time_point when = Faults::Clock::now() + delay;
    events.post([this, when, event = std::move(event)] {
        // None overtakes another, and what comes in time waits for nobody.
        if (late.empty() && when <= Faults::Clock::now()) {
            event();
        } else {
            late.emplace(late.empty() ? when : std::max(when, late.rbegin()->first), event);
        }
    });
}

void Session::releaseLate() {
    const Faults::Clock::time_point now = Faults::Clock::now();
    while (!late.empty() && late.begin()->first <= now) {
        events.post(std::move(late.begin()->second));
        late.erase(late.begin());
    }
}

void Session::show(const Faults::Turn& turn) {
    using Kind = Faults::Kind;
    switch (turn.kind) {
    case Kind::offline:
        log(turn.begins ? "Fault: the connection is lost" : "Fault: the connection is back");
        raise(&sp_session_callbacks::connection_error,
              turn.begins ? SP_ERROR_UNABLE_TO_CONTACT_SERVER : SP_ERROR_OK);
        break;
    case Kind::token:
        log("Fault: the play token is lost");
        if (playing && account) {
            losePlayToken();
        } else {
            raise(&sp_session_callbacks::play_token_lost);
        }
        break;
    case Kind::streamError:
        log("Fault: the stream breaks off");
        stopPlaying();
        raise(&sp_session_callbacks::streaming_error, SP_ERROR_OTHER_TRANSIENT);
        break;
    case Kind::unavailable:
        log(turn.begins ? "Fault: a track is not available" : "Fault: a track is available again");
        lists->tellMetadata();
        raise(&sp_session_callbacks::metadata_updated);
        break;
    case Kind::message:
        raise(&sp_session_callbacks::message_to_user, turn.text.c_str());
        break;
    case Kind::login:
    case Kind::slow:
        // Seen by who asks for something meanwhile.
        break;
    }
}

void Session::lookForChanges() {
    keepAgain();
    if (shelves->refreshCatalogue()) {
        images->catalogueChanged();
        lists->tellMetadata();
        events.post([this] { raise(&sp_session_callbacks::metadata_updated); });
    }
    if (shelves->refreshAccounts()) {
        lists->catchUp();
        if (playing && account && accounts().playToken(account->id) != token) {
            losePlayToken();
        }
        if (refreshFriends()) {
            events.post([this] { raise(&sp_session_callbacks::userinfo_updated); });
        }
    }
}

void Session::rebuildDamaged(const DatabaseError& error) {
    if (!error.damaged() || error.path() != paths.catalogueFile(music) ||
        rebuilding.exchange(true)) {
        return;
    }
    events.post([this, error] {
        scanner.reset();
        try {
            log(setCatalogueAside(error));
        } catch (const std::exception& failure) {
            log(failure.what());
        }
        startScan();
    });
}

// ---- Accounts ----

sp_error Session::login(const char* name, const char* password, bool remember, const char* blob) {
    const bool hasBlob = blob != nullptr && *blob != '\0';
    if (name == nullptr || *name == '\0' || (password == nullptr && !hasBlob)) {
        return SP_ERROR_INVALID_INDATA;
    }
    const std::string wanted = name;
    const Secret secret(hasBlob ? blob : password);
    checkCredentials(
        [wanted, secret, hasBlob](Accounts& store) {
            return hasBlob ? store.checkBlob(wanted, secret) : store.checkPassword(wanted, secret);
        },
        remember, true);
    return SP_ERROR_OK;
}

sp_error Session::relogin() {
    const std::optional<Account> remembered = accounts().remembered();
    if (!remembered) {
        return SP_ERROR_NO_CREDENTIALS;
    }
    checkCredentials([](Accounts& store) { return store.remembered(); }, false, false);
    return SP_ERROR_OK;
}

// The worker opens a connection of its own, since a check takes as long as its hash is hard.
void Session::checkCredentials(Check check, bool remember, bool issueBlob) {
    const unsigned attempt = ++loginAttempt;
    loginPending = true;
    if (const std::optional<sp_error> refused = faults->login()) {
        answer([this, attempt, refused] { endLogin(attempt, std::nullopt, {}, *refused); });
        return;
    }
    worker->post(
        [this, attempt, remember, issueBlob, file = storage->accounts(), check = std::move(check)] {
            std::optional<Account> found;
            std::string blob;
            sp_error error = SP_ERROR_BAD_USERNAME_OR_PASSWORD;
            try {
                Accounts store(file);
                found = check(store);
                // Who is right is let in, though the disk be full.
                if (found && remember) {
                    orLog("The user is not remembered", [&] { store.remember(found->id); });
                }
                if (found && issueBlob) {
                    orLog("There is no new blob", [&] { blob = store.issueBlob(found->id); });
                }
            } catch (const std::exception& failure) {
                log(std::string("Login failed: ") + failure.what());
                found.reset();
                error = SP_ERROR_OTHER_PERMANENT;
            }
            answer([this, attempt, found, blob, error] { endLogin(attempt, found, blob, error); });
        });
}

void Session::endLogin(unsigned attempt,
                       const std::optional<Account>& found,
                       const std::string& blob,
                       sp_error error) {
    if (attempt != loginAttempt) {
        return;
    }
    loginPending = false;
    if (found) {
        finishLogin(*found, blob);
    } else {
        raise(&sp_session_callbacks::logged_in, error);
    }
}

void Session::finishLogin(const Account& found, const std::string& blob) {
    if (account && account->id != found.id) {
        stopPlaying();
        account.reset();
        userHandle = {};
        tellQueries(cancelQueries());
        lists->logOut();
        raise(&sp_session_callbacks::logged_out);
        if (closed) {
            return;
        }
    }
    account = found;
    userHandle = shelves->user(found.name);
    lists->logIn(found);
    refreshFriends();
    log("Logged in as " + found.name);
    raise(&sp_session_callbacks::logged_in, SP_ERROR_OK);
    if (!blob.empty()) {
        raise(&sp_session_callbacks::credentials_blob_updated, blob.c_str());
    }
    raise(&sp_session_callbacks::userinfo_updated);
    raise(&sp_session_callbacks::metadata_updated);
}

sp_error Session::logout() {
    if (!account && !loginPending) {
        return SP_ERROR_OK;
    }
    ++loginAttempt;
    loginPending = false;
    stopPlaying();
    account.reset();
    userHandle = {};
    friends.clear();
    lists->logOut();
    events.post([this, cancelled = cancelQueries()] {
        tellQueries(cancelled);
        raise(&sp_session_callbacks::logged_out);
    });
    return SP_ERROR_OK;
}

sp_error Session::forgetMe() const {
    accounts().forget();
    return SP_ERROR_OK;
}

std::optional<std::string> Session::rememberedUser() const {
    const std::optional<Account> remembered = accounts().remembered();
    return remembered ? std::optional<std::string>(remembered->name) : std::nullopt;
}

sp_connectionstate Session::connectionState() const {
    if (!account) {
        return SP_CONNECTION_STATE_LOGGED_OUT;
    }
    return faults->isOffline() ? SP_CONNECTION_STATE_DISCONNECTED : SP_CONNECTION_STATE_LOGGED_IN;
}

bool Session::refreshFriends() {
    std::vector<Ref<sp_user>> others;
    if (account) {
        for (const Account& other : accounts().all()) {
            if (other.id != account->id) {
                others.push_back(shelves->user(other.name));
            }
        }
    }
    // A user whom someone holds has one handle.
    const bool same = std::equal(others.begin(), others.end(), friends.begin(), friends.end(),
                                 [](const Ref<sp_user>& left, const Ref<sp_user>& right) {
                                     return left.get() == right.get();
                                 });
    friends.swap(others);
    return !same;
}

int Session::friendCount() const {
    return static_cast<int>(friends.size());
}

sp_user* Session::friendAt(int index) const {
    return index < 0 || index >= friendCount() ? nullptr : friends[index].get();
}

int Session::country() const {
    if (account && account->country.size() == 2) {
        return account->country[0] << 8 | account->country[1];
    }
    return homeCountry();
}

int Session::homeCountry() {
    // As the C library reads it: the first of these that is set decides.
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* locale = g_getenv(name);
        if (locale == nullptr || *locale == '\0') {
            continue;
        }
        const char* territory = std::strchr(locale, '_');
        const bool known = territory != nullptr && g_ascii_isupper(territory[1]) &&
                           g_ascii_isupper(territory[2]) && !g_ascii_isalnum(territory[3]);
        return known ? territory[1] << 8 | territory[2] : 0;
    }
    return 0;
}

sp_error Session::setCacheSize(std::size_t megabytes) const {
    accounts().setSetting(cacheSetting, std::to_string(megabytes));
    images->setCacheSize(megabytes);
    return SP_ERROR_OK;
}

// ---- Playing ----

std::string Session::filePath(Track& track) const {
    return music + '/' + track.path();
}

sp_error Session::playable(Track& track) const {
    if (!account) {
        return SP_ERROR_PERMISSION_DENIED;
    }
    if (!track.isLoaded() && track.error() == SP_ERROR_IS_LOADING) {
        return SP_ERROR_IS_LOADING;
    }
    return track.isAvailable() ? SP_ERROR_OK : SP_ERROR_TRACK_NOT_PLAYABLE;
}

sp_error Session::load(Track& track) {
    if (const sp_error error = playable(track); error != SP_ERROR_OK) {
        return error;
    }
    stopPlaying();
    soundFrom = Faults::Clock::now() + faults->delay();
    const sp_error error = player->load(filePath(track));
    if (error == SP_ERROR_OK) {
        loadedDurationMs = track.durationMs();
        const std::lock_guard<std::mutex> lock(loadedMutex);
        loaded = track.id();
    }
    return error;
}

sp_error Session::play(bool on) {
    if (!loaded) {
        return SP_ERROR_NO_STREAM_AVAILABLE;
    }
    if (on && account) {
        orLog("Other sessions are not told who plays",
              [this] { accounts().takePlayToken(account->id, token); });
    }
    playing = on;
    return player->play(on);
}

sp_error Session::seek(int offsetMs) {
    if (!loaded) {
        return SP_ERROR_NO_STREAM_AVAILABLE;
    }
    if (offsetMs < 0 || offsetMs > loadedDurationMs) {
        return SP_ERROR_INVALID_INDATA;
    }
    soundFrom = Faults::Clock::now() + faults->delay();
    return player->seek(offsetMs);
}

sp_error Session::unload() {
    stopPlaying();
    return SP_ERROR_OK;
}

sp_error Session::prefetch(Track& track) {
    if (const sp_error error = playable(track); error != SP_ERROR_OK) {
        return error;
    }
    return player->prefetch(filePath(track));
}

void Session::stopPlaying() {
    playing = false;
    // There is nothing to unload when nothing is loaded; the answer would say no more.
    static_cast<void>(player->unload());
    const std::lock_guard<std::mutex> lock(loadedMutex);
    loaded.reset();
}

void Session::losePlayToken() {
    playing = false;
    static_cast<void>(player->play(false));
    log("Playback stopped: another session plays for " + account->name);
    events.post([this] { raise(&sp_session_callbacks::play_token_lost); });
}

// ---- Stars ----

bool Session::isStarred(const Track& track) const {
    return lists->isStarred(track.id());
}

sp_error Session::setStarred(const std::vector<Id>& tracks, bool star) {
    const sp_error error = lists->setStarred(tracks, star);
    if (error == SP_ERROR_OK) {
        events.post([this] { raise(&sp_session_callbacks::metadata_updated); });
    }
    return error;
}

// ---- Queries ----

void Session::ask(Ref<Query> query) {
    const unsigned number = ++lastQuery;
    queries.emplace(number, query);
    worker->post([this, number, query = std::move(query)] { findAnswer(number, *query.get()); });
}

// On the worker.
void Session::findAnswer(unsigned number, Query& query) {
    if (number <= cancelledQueries) {
        return;
    }
    sp_error error = SP_ERROR_OTHER_PERMANENT;
    try {
        if (queryStore == nullptr) {
            queryStore = std::make_unique<QueryStore>(queriedCatalogue, queriedAccounts);
        }
        error = faults->isOffline() ? SP_ERROR_OTHER_TRANSIENT : query.find(*queryStore);
    } catch (const std::exception& failure) {
        log(std::string("A query failed: ") + failure.what());
        queryStore.reset();
        if (const auto* database = dynamic_cast<const DatabaseError*>(&failure)) {
            rebuildDamaged(*database);
        }
    }
    answer([this, number, error] { finishQuery(number, error); });
}

void Session::finishQuery(unsigned number, sp_error error) {
    const auto found = queries.find(number);
    if (found == queries.end()) {
        return;
    }
    const Ref<Query> query = found->second;
    queries.erase(found);
    try {
        // The worker may have seen a younger catalogue than the handles have.
        lookForChanges();
    } catch (const std::exception& failure) {
        log(failure.what());
    }
    query->finish(error, *shelves);
    query->notify();
}

std::vector<Ref<Query>> Session::cancelQueries() {
    cancelledQueries = lastQuery;
    std::vector<Ref<Query>> cancelled;
    for (const auto& [number, query] : std::exchange(queries, {})) {
        query->finish(SP_ERROR_OTHER_TRANSIENT, *shelves);
        cancelled.push_back(query);
    }
    return cancelled;
}

void Session::tellQueries(const std::vector<Ref<Query>>& cancelled) const {
    for (const Ref<Query>& query : cancelled) {
        // The one before may have released the session.
        if (!closed) {
            query->notify();
        }
    }
}

}  // namespace sonolet::service
