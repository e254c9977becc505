#include "session/Session.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
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

std::shared_ptr<Faults> faultsToShow() {
    try {
        return std::make_shared<Faults>(Faults::fromEnvironment());
    } catch (const std::invalid_argument& error) {
        throw ServiceError(SP_ERROR_API_INITIALIZATION_FAILED,
                           std::string("SONOLET_FAULT: ") + error.what());
    }
}

}  // namespace

Session::Session(const sp_session_config& config)
    : callbacks(checked(config), static_cast<sp_session*>(this)), userData(config.userdata),
      faults(faultsToShow()), late(callbacks, faults) {
    try {
        makeParts(config);
    } catch (const std::exception& error) {
        endWorkers();  // their tasks use the other parts
        throw ServiceError(SP_ERROR_API_INITIALIZATION_FAILED, error.what());
    }
}

Session::~Session() = default;

void Session::makeParts(const sp_session_config& config) {
    const auto log = [this](std::string line) { callbacks.log(std::move(line)); };
    paths = StatePaths::prepare(config.settings_location, config.cache_location);
    source = openSource();
    log("Settings in " + paths.settings + ", cache in " + paths.cache + ", music in " +
        source->description());
    storage = std::make_unique<Storage>(source->files(paths), source->firstAccount(), log);
    Storage::Opened opened = storage->begin();
    shelves =
        std::make_shared<Library>(std::move(opened.catalogue), std::move(opened.accounts), *source);
    shelves->setFaults(faults);
    lists = std::make_shared<Playlists>(
        shelves, [this](EventQueue::Event event) { callbacks.post(std::move(event)); },
        !config.initially_unload_playlists);
    checker = std::make_unique<Worker>();
    answerer = std::make_unique<Worker>();
    painter = std::make_unique<Worker>();
    makeImages();
    questions = std::make_unique<Queries>(
        callbacks, late, *answerer, shelves, *source, faults,
        Queries::Hooks{[this] { lookForChanges(); },
                       [this](const DatabaseError& error) { rebuildDamaged(error); }});
    questions->use(storage->kept());
    player = std::make_unique<Playback>(callbacks, lists, faults, *source);
    logins = std::make_unique<Login>(callbacks, late, *checker, *questions, *player, *source, lists,
                                     faults);
    logins->use(storage->kept().accounts);
    faultShow = std::make_unique<FaultShow>(callbacks, *player, *lists, faults);
}

std::unique_ptr<Source> Session::openSource() {
    SourceEvents events;
    events.log = [this](std::string line) { callbacks.log(std::move(line)); };
    events.post = [this](EventQueue::Event event) { callbacks.post(std::move(event)); };
    events.settled = [this] { settled(); };
    events.connection = [this](sp_error error) {
        callbacks.raise(&sp_session_callbacks::connection_error, error);
    };
    events.expelled = [this](sp_error why) { logins->expel(why); };
    return makeSource(std::move(events));
}

void Session::start() {
    source->start(storage->kept());
}

void Session::makeImages() {
    const ImageLoader::Log log = [this](std::string line) { callbacks.log(std::move(line)); };
    auto loader = std::make_unique<ImageLoader>(
        paths.cache, storage->kept().catalogue,
        [this](const std::string& catalogue) {
            return source->pictures(catalogue, painter->stopFlag());
        },
        log, painter->stopFlag());
    images = std::make_shared<Images>(
        std::move(loader), shelves, *painter,
        [this](EventQueue::Event event) { late.answer(std::move(event)); }, log);
    const std::string kept = shelves->accounts()->setting(cacheSetting).value_or("0");
    const std::uint64_t megabytes = std::strtoull(kept.c_str(), nullptr, 10);
    images->setCacheSize(megabytes);
    source->setCacheSize(megabytes);
}

void Session::endWorkers() {
    checker.reset();
    answerer.reset();
    painter.reset();
}

void Session::close() {
    callbacks.silence();
    // Each joins its thread; what those still post is dropped with the queue.
    player->close();
    source->stop();
    endWorkers();
    images->close();
    callbacks.close();
    late.clear();
    questions->close();
    logins->close();
    lists->close();
    shelves->close();
}

sp_error Session::processEvents(int* nextTimeout) {
    if (!dispatching) {
        // A callback may release the session.
        const std::shared_ptr<Session> keep = shared_from_this();
        // Ends also when there is no memory to say what has failed.
        const struct Dispatching {
            explicit Dispatching(bool& itsFlag) : flag(itsFlag) { flag = true; }
            ~Dispatching() { flag = false; }
            bool& flag;
        } turn(dispatching);
        try {
            lookForChanges();
        } catch (const std::exception& error) {
            callbacks.log(error.what());
        }
        logins->greet();
        faultShow->post();
        late.release();
        callbacks.handleEvents();
    }
    if (nextTimeout != nullptr) {
        *nextTimeout = timeout();
    }
    return SP_ERROR_OK;
}

int Session::timeout() const {
    if (callbacks.areWaiting()) {
        return 0;
    }
    using std::chrono::milliseconds;
    Faults::Clock::duration pause =
        milliseconds(lists->account() ? loggedInTimeout : restingTimeout);
    for (const auto& next : {faults->untilNext(), late.untilNext()}) {
        pause = std::min(pause, next.value_or(pause));
    }
    return static_cast<int>(std::max<milliseconds::rep>(
        std::chrono::duration_cast<milliseconds>(pause).count() + 1, 0));
}

void Session::lookForChanges() {
    keepAgain();
    if (shelves->refreshCatalogue()) {
        images->catalogueChanged();
        lists->tellMetadata();
        callbacks.post([this] { callbacks.raise(&sp_session_callbacks::metadata_updated); });
    }
    if (shelves->refreshAccounts()) {
        lists->catchUp();
        player->checkToken();
        if (logins->refreshFriends()) {
            callbacks.post([this] { callbacks.raise(&sp_session_callbacks::userinfo_updated); });
        }
    }
    if (std::exchange(knownListChange, lists->newest()) != lists->newest()) {
        source->listsChanged();
    }
}

// Goes back to the files of a disk that was full, once that is possible.
void Session::keepAgain() {
    std::optional<Storage::Opened> opened = storage->keepAgain();
    if (!opened) {
        return;
    }
    const auto before =
        shelves->exchange(std::move(opened->catalogue), std::move(opened->accounts));
    lists->reopen();
    questions->use(storage->kept());
    logins->use(storage->kept().accounts);
    images->setCatalogue(storage->kept().catalogue);
    source->start(storage->kept());
    // The workers may still be in what was in memory.
    for (Worker* worker : {checker.get(), answerer.get(), painter.get()}) {
        worker->post([inMemory = opened->before] {});
    }
}

void Session::settled() {
    // The last changes may be younger than the last look.
    shelves->refreshCatalogue();
    images->catalogueChanged();
    lists->tellMetadata();
    callbacks.raise(&sp_session_callbacks::metadata_updated);
}

sp_error Session::setCacheSize(std::size_t megabytes) const {
    shelves->accounts()->setSetting(cacheSetting, std::to_string(megabytes));
    images->setCacheSize(megabytes);
    source->setCacheSize(megabytes);
    return SP_ERROR_OK;
}

sp_error Session::setStarred(const std::vector<Id>& tracks, bool star) {
    const sp_error error = lists->setStarred(tracks, star);
    if (error == SP_ERROR_OK) {
        callbacks.post([this] { callbacks.raise(&sp_session_callbacks::metadata_updated); });
    }
    return error;
}

}  // namespace sonolet::service
