#include "Session.h"

#include "Answer.h"
#include "Appkey.h"
#include "Factory.h"
#include "LibWrapper.h"
#include "Logger.h"
#include "PendingQueries.h"
#include "SessionConfig.h"
#include "Track.h"
#include "TrackFactory.h"

#include <stdexcept>
#include <type_traits>

using TellusClientNamespace::AudioTrack;
using TellusClientNamespace::Player;
using TellusClientNamespace::TrackFactory;
using TellusClientNamespace::TrackSettingsStruct;

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Session");

constexpr char cacheLocation[] = "/var/tmp/spotify_cache";
constexpr char settingsLocation[] = "/settings/spotify";
constexpr char certificates[] = "/etc/ssl/certs_static/ca-certificates.crt";

}  // namespace

// A callback of libspotify that does nothing but raise an event: its name in the log, and the
// event's.
struct SessionEvent {
    const char* handler;
    const char* name;
};

namespace {

constexpr SessionEvent loggedIn{"Session::handleLoggedInEvent", "LoggedIn"};
constexpr SessionEvent loggedOut{"Session::handleLoggedOutEvent", "LoggedOut"};
constexpr SessionEvent metadataUpdated{"Session::handleMetadataUpdatedEvent", "MetadataUpdated"};
constexpr SessionEvent connectionError{"Session::handleConnectionErrorEvent", "ConnectionError"};
constexpr SessionEvent messageToUser{"Session::handleMessageToUserEvent", "MessageToUser"};
constexpr SessionEvent playTokenLost{"Session::handlePlayTokenLostEvent", "PlayTokenLost"};
constexpr SessionEvent logMessage{"Session::handleLogMessageEvent", "LogMessage"};
constexpr SessionEvent streamingError{"Session::handleStreamingErrorEvent", "StreamingError"};
constexpr SessionEvent userinfoUpdated{"Session::handleUserinfoUpdatedEvent", "UserinfoUpdated"};
constexpr SessionEvent offlineStatusUpdated{"Session::handleOfflineStatusUpdatedEvent",
                                            "OfflineStatusUpdated"};
constexpr SessionEvent offlineError{"Session::handleOfflineErrorEvent", "OfflineError"};
constexpr SessionEvent credentialsBlobUpdated{"Session::handleCredentialsBlobUpdated",
                                              "CredentialsBlobUpdated"};
constexpr SessionEvent showSignupPage{"Session::handleShowSignupPageEvent", "ShowSignupPage"};
constexpr SessionEvent showSignupErrorPage{"Session::handleShowSignupErrorPageEvent",
                                           "ShowSignupErrorPage"};
constexpr SessionEvent showTrialWelcome{"Session::handleShowTrialWelcomeEvent", "ShowTrialWelcome"};

// Numbers of enumerations reach script as such.
template <class Value>
auto asScript(Value value) {
    if constexpr (std::is_enum_v<Value>) {
        return static_cast<int>(value);
    } else {
        return value;
    }
}

}  // namespace

std::atomic<Session*> Session::instance{nullptr};

Session::Session(const orvo::shared_ptr<Sonolet>& pluginObject) : sonolet(pluginObject) {
    // Those that only ask libspotify are in SessionAccount.cpp.
    static const function_row members[] = {
        {"create", &Session::create, "o"},
        {"relogin", &Session::relogin, ""},
        {"playerLoad", &Session::playerLoad, "o"},
        {"friend", &Session::friendAt, "n"},
        {"numFriends", &Session::numFriends, ""},
        {"userCountry", &Session::userCountry, ""},
        {"playerUnload", &Session::playerUnload, ""},
        {"rememberedUser", &Session::rememberedUser, ""},
        {"playerPrefetch", &Session::playerPrefetch, "o"},
        {"playerSeek", &Session::playerSeek, "n"},
        {"logout", &Session::logout, ""},
        {"user", &Session::user, ""},
        {"inboxCreate", &Session::inboxCreate, ""},
        {"setCacheSize", &Session::setCacheSize, "n"},
        {"forgetMe", &Session::forgetMe, ""},
        {"publishedContainerForUserCreate", &Session::publishedContainerForUserCreate, "s"},
        {"starredForUserCreate", &Session::starredForUserCreate, "s"},
        {"connectionstate", &Session::connectionstate, ""},
        {"starredCreate", &Session::starredCreate, ""},
        {"login", &Session::login, "ssbs"},
        {"playerPlay", &Session::playerPlay, "b"},
        {"Playlistcontainer", &Session::playlistcontainer, ""},
        {"signupGetUnacceptedLicenses", &Session::signupGetUnacceptedLicenses, ""},
        {"signupPerformAction", &Session::signupPerformAction, "n"},
    };
    static const attribute_row events[] = {
        JSPP_EVENT_ROW(Session, PlayTokenLost),
        JSPP_EVENT_ROW(Session, LoggedIn),
        JSPP_EVENT_ROW(Session, StreamingError),
        JSPP_EVENT_ROW(Session, ConnectionError),
        JSPP_EVENT_ROW(Session, UserinfoUpdated),
        JSPP_EVENT_ROW(Session, LoggedOut),
        JSPP_EVENT_ROW(Session, LogMessage),
        JSPP_EVENT_ROW(Session, MessageToUser),
        JSPP_EVENT_ROW(Session, EndOfTrack),
        JSPP_EVENT_ROW(Session, MetaDataUpdated),
        JSPP_EVENT_ROW(Session, CredentialsBlobUpdated),
        JSPP_EVENT_ROW(Session, ShowTrialWelcome),
    };
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), members, events);
    _class(names);
    instance.store(this);
}

Session::~Session() {
    // No callback finds the session any more, and those that did have left.
    Session* expected = this;
    instance.compare_exchange_strong(expected, nullptr);
    Visit::awaitOthers();
    // Wrappers that script still holds keep the libspotify session until they go.
    if (session) {
        sp_session_player_unload(session);
        PendingQueries::getInstance().clear();
        Factory::getInstance().setSession(nullptr, {});
    }
}

sp_session* Session::requireLibrarySession(const char* complaint) {
    // Script thread: the session does not go under its own page's call.
    const Session* const current = instance.load();
    if (!current || !current->session) {
        throw std::runtime_error(complaint);
    }
    return current->session;
}

void Session::requireInitialized() const {
    if (!spotifyInitialized) {
        throw std::runtime_error("Spotify is not initialized");
    }
}

void Session::processEvents() {
    sp_session_process_events(session, &nextTimeout);
}

// ---- Beginning and end of an account ----

void Session::create(jspp::function_context& context) {
    if (!spotifyInitialized) {
        const orvo::shared_ptr<SessionConfig> options = context.interface_of<SessionConfig>(0);
        sp_session_config config{};
        config.api_version = SPOTIFY_API_VERSION;
        config.cache_location = cacheLocation;
        config.settings_location = settingsLocation;
        config.application_key = applicationKey;
        config.application_key_size = applicationKeySize;
        config.ca_certs_filename = certificates;
        config.callbacks = &libraryCallbacks();
        options->apply(config);

        // Nothing is kept before all that may fail is made.
        Factory& factory = Factory::getInstance();
        auto newPlayer = std::make_unique<Player>();
        const orvo::shared_ptr<LibWrapper> library(new LibWrapper(config));
        logger.trace("Session::create", "Initializing Spotify session: OK");
        session = library->getSession();
        factory.setSession(session, library);
        player = std::move(newPlayer);
        spotifyInitialized = true;
    }
    context.return_interface(shared_from_this(), false);
}

void Session::logout(jspp::function_context&) const {
    requireInitialized();
    logger.trace("Session::logout", "logging out");
    Factory::getInstance().clearObjects();
    sp_session_logout(session);
}

void Session::playlistcontainer(jspp::function_context& context) const {
    requireInitialized();
    logger.trace("Session::Playlistcontainer", "Retrieving playlistcontainer");
    answer(sp_session_playlistcontainer(session), context);
}

// ---- Player ----

void Session::playerLoad(jspp::function_context& context) {
    requireInitialized();
    logger.trace("Session::playerLoad");
    sp_track* const track = context.interface_of<Track>(0)->getHandle();
    Player::requireFree();
    {
        const orvo::scoped_lock lock(trackMutex);
        isReplacingTrack = true;
    }
    const sp_error error = sp_session_player_load(session, track);
    std::unique_ptr<AudioTrack> replaced = TrackFactory::getInstance().createTrack(track);
    AudioTrack* const loaded = replaced.get();
    {
        const orvo::scoped_lock lock(trackMutex);
        currentTrack.swap(replaced);
        isReplacingTrack = false;
    }
    // The earlier track goes when the player has let it go.
    player->playTrack(loaded);
    answer(error, context);
}

void Session::playerPlay(jspp::function_context& context) {
    requireInitialized();
    logger.trace("Session::playerPlay");
    const bool play = context.boolean(0);
    const sp_error error = sp_session_player_play(session, play);
    if (play) {
        player->resume();
    } else {
        player->pause();
    }
    answer(error, context);
}

void Session::playerSeek(jspp::function_context& context) const {
    requireInitialized();
    // What is buffered already is played out first.
    sp_session_player_seek(session, context.integer(0));
}

void Session::playerUnload(jspp::function_context&) const {
    requireInitialized();
    sp_session_player_unload(session);
}

void Session::playerPrefetch(jspp::function_context& context) const {
    requireInitialized();
    sp_track* const track = context.interface_of<Track>(0)->getHandle();
    answer(sp_session_player_prefetch(session, track), context);
}

void Session::forceStopPlayback() {
    logger.trace("Session::forceStopPlayback");
    triggerTrackCompleteEvent();
    if (player) {
        player->releaseTrack();
    }
    if (session) {
        sp_session_player_unload(session);
        sp_session_logout(session);
    }
}

void Session::triggerTrackCompleteEvent() noexcept {
    if (sonolet) {
        sonolet->triggerTrackCompleteEvent();
    }
}

// ---- libspotify's callbacks ----

template <class Result, class Body>
Result Session::answered(const Body& body) noexcept {
    try {
        const Visit visit;
        if (Session* const current = instance.load()) {
            return body(*current);
        }
    } catch (...) {
        logger.error("Session::forward", "a callback failed and its event is lost");
    }
    return Result();
}

template <auto Handler, class... Arguments>
std::invoke_result_t<decltype(Handler), Session&, Arguments...>
Session::forward(sp_session*, Arguments... arguments) noexcept {
    using Result = std::invoke_result_t<decltype(Handler), Session&, Arguments...>;
    return answered<Result>([&](Session& self) { return (self.*Handler)(arguments...); });
}

template <const SessionEvent& Event, class... Arguments>
void Session::tell(sp_session*, Arguments... arguments) noexcept {
    answered<void>([&](Session& self) {
        logger.trace(Event.handler);
        self.dispatch_event(Event.name, asScript(arguments)...);
    });
}

const sp_session_callbacks& Session::libraryCallbacks() {
    static const sp_session_callbacks callbacks = [] {
        sp_session_callbacks table{};
        table.logged_in = &tell<loggedIn>;
        table.logged_out = &tell<loggedOut>;
        table.metadata_updated = &tell<metadataUpdated>;
        table.connection_error = &tell<connectionError>;
        table.message_to_user = &tell<messageToUser>;
        table.notify_main_thread = &forward<&Session::handleNotifyMainThreadEvent>;
        table.music_delivery = &forward<&Session::handleMusicDeliveryEvent>;
        table.play_token_lost = &tell<playTokenLost>;
        table.log_message = &tell<logMessage>;
        table.end_of_track = &forward<&Session::handleEndOfTrackEvent>;
        table.streaming_error = &tell<streamingError>;
        table.userinfo_updated = &tell<userinfoUpdated>;
        table.offline_status_updated = &tell<offlineStatusUpdated>;
        table.offline_error = &tell<offlineError>;
        table.credentials_blob_updated = &tell<credentialsBlobUpdated>;
        table.show_signup_page = &tell<showSignupPage>;
        table.show_signup_error_page = &tell<showSignupErrorPage>;
        table.connect_to_facebook = &forward<&Session::handleConnectToFacebookEvent>;
        table.show_trial_welcome = &tell<showTrialWelcome>;
        return table;
    }();
    return callbacks;
}

// The fixed poll drives libspotify, not its wake-up call.
void Session::handleNotifyMainThreadEvent() {}

int Session::handleMusicDeliveryEvent(const sp_audioformat* format,
                                      const void* frames,
                                      int numFrames) {
    logger.trace("Session::handleMusicDeliveryEvent");
    const orvo::scoped_lock lock(trackMutex);
    if (!currentTrack || isReplacingTrack) {
        return 0;
    }
    if (!currentTrack->isInitialized()) {
        TrackSettingsStruct settings{format->sample_type,
                                     static_cast<unsigned>(format->sample_rate),
                                     static_cast<unsigned>(format->channels), 0};
        currentTrack->initialize(&settings);
    }
    const unsigned taken = currentTrack->write(static_cast<const unsigned char*>(frames),
                                               static_cast<unsigned>(numFrames));
    return taken == 0 ? 0 : numFrames;
}

void Session::handleEndOfTrackEvent() {
    logger.trace("Session::handleEndOfTrackEvent");
    {
        const orvo::scoped_lock lock(trackMutex);
        if (currentTrack && !isReplacingTrack) {
            currentTrack->setLoaded();
        }
    }
    triggerEndOfTrackEvent();
}

void Session::triggerEndOfTrackEvent() {
    dispatch_event("EndOfTrack");
}

// Script takes no part in it.
void Session::handleConnectToFacebookEvent(const char* /*permissions*/) {
    logger.trace("Session::handleConnectToFacebookEvent");
}
