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

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

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

std::atomic<Session*> Session::instance{nullptr};

// ---- Visits ----

namespace {

std::atomic<int> visits{0};
thread_local int ownVisits = 0;

// Where a destructor sleeps until the others have left. Never freed: the library's threads go on
// after the exit handlers.
struct LeavingRoom {
    orvo::Mutex mutex;
    orvo::Condition left;
    std::atomic<bool> isInUse{false};
};

LeavingRoom& leavingRoom() {
    static LeavingRoom& room = *new LeavingRoom;
    return room;
}

// A callback cannot be told that there is no memory.
[[maybe_unused]] const LeavingRoom& madeAtLoad = leavingRoom();

}  // namespace

Session::Visit::Visit() noexcept {
    ++ownVisits;
    visits.fetch_add(1);
}

Session::Visit::~Visit() {
    --ownVisits;
    visits.fetch_sub(1);
    LeavingRoom& room = leavingRoom();
    if (room.isInUse.load()) {
        const orvo::scoped_lock lock(room.mutex);
        room.left.notify_all();
    }
}

void Session::Visit::awaitOthers() noexcept {
    LeavingRoom& room = leavingRoom();
    const orvo::scoped_lock lock(room.mutex);
    room.isInUse.store(true);
    while (visits.load() != ownVisits) {
        room.left.wait(room.mutex);
    }
    room.isInUse.store(false);
}

Session::Session(const orvo::shared_ptr<Sonolet>& pluginObject) : sonolet(pluginObject) {
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

// ---- Creation and account ----

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

void Session::login(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    const std::string password = context.string(1);
    const bool rememberMe = context.boolean(2);
    const std::string blob = context.string(3);
    const sp_error error = sp_session_login(session, userName.c_str(), password.c_str(), rememberMe,
                                            blob.empty() ? nullptr : blob.c_str());
    sp_session_preferred_bitrate(session, SP_BITRATE_320k);
    answer(error, context);
}

void Session::logout(jspp::function_context&) const {
    requireInitialized();
    logger.trace("Session::logout", "logging out");
    Factory::getInstance().clearObjects();
    sp_session_logout(session);
}

void Session::relogin(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_relogin(session), context);
}

void Session::forgetMe(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_forget_me(session), context);
}

void Session::rememberedUser(jspp::function_context& context) const {
    requireInitialized();
    std::vector<char> name(256);
    int length = sp_session_remembered_user(session, name.data(), name.size());
    if (length >= 0 && static_cast<std::size_t>(length) >= name.size()) {
        name.resize(static_cast<std::size_t>(length) + 1);
        length = sp_session_remembered_user(session, name.data(), name.size());
    }
    if (length < 0) {
        context.return_null();
        return;
    }
    name.back() = '\0';
    context.return_string(name.data());
}

void Session::connectionstate(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_connectionstate(session), context);
}

void Session::setCacheSize(jspp::function_context& context) const {
    requireInitialized();
    const int megabytes = std::max(0, context.integer(0));
    sp_session_set_cache_size(session, static_cast<std::size_t>(megabytes));
}

void Session::userCountry(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_user_country(session), context);
}

void Session::user(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_user(session), context);
}

void Session::numFriends(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_num_friends(session), context);
}

void Session::friendAt(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_friend(session, context.integer(0)), context);
}

void Session::playlistcontainer(jspp::function_context& context) const {
    requireInitialized();
    logger.trace("Session::Playlistcontainer", "Retrieving playlistcontainer");
    answer(sp_session_playlistcontainer(session), context);
}

void Session::publishedContainerForUserCreate(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    answer(Created<sp_playlistcontainer>(
               sp_session_publishedcontainer_for_user_create(session, userName.c_str())),
           context);
}

void Session::inboxCreate(jspp::function_context& context) const {
    requireInitialized();
    answer(Created<sp_playlist>(sp_session_inbox_create(session)), context);
}

void Session::starredCreate(jspp::function_context& context) const {
    requireInitialized();
    answer(Created<sp_playlist>(sp_session_starred_create(session)), context);
}

void Session::starredForUserCreate(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    answer(Created<sp_playlist>(sp_session_starred_for_user_create(session, userName.c_str())),
           context);
}

void Session::signupGetUnacceptedLicenses(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_signup_get_unaccepted_licenses(session), context);
}

void Session::signupPerformAction(jspp::function_context& context) const {
    requireInitialized();
    const auto action = static_cast<sp_signup_action>(context.integer(0));
    answer(sp_session_signup_perform_action(session, action), context);
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

template <auto Handler, class... Arguments>
std::invoke_result_t<decltype(Handler), Session&, Arguments...>
Session::forward(sp_session*, Arguments... arguments) noexcept {
    using Result = std::invoke_result_t<decltype(Handler), Session&, Arguments...>;
    try {
        const Visit visit;
        if (Session* const current = instance.load()) {
            return (current->*Handler)(arguments...);
        }
    } catch (...) {
        logger.error("Session::forward", "a callback failed and its event is lost");
    }
    return Result();
}

const sp_session_callbacks& Session::libraryCallbacks() {
    static const sp_session_callbacks callbacks = [] {
        sp_session_callbacks table{};
        table.logged_in = &forward<&Session::handleLoggedInEvent>;
        table.logged_out = &forward<&Session::handleLoggedOutEvent>;
        table.metadata_updated = &forward<&Session::handleMetadataUpdatedEvent>;
        table.connection_error = &forward<&Session::handleConnectionErrorEvent>;
        table.message_to_user = &forward<&Session::handleMessageToUserEvent>;
        table.notify_main_thread = &forward<&Session::handleNotifyMainThreadEvent>;
        table.music_delivery = &forward<&Session::handleMusicDeliveryEvent>;
        table.play_token_lost = &forward<&Session::handlePlayTokenLostEvent>;
        table.log_message = &forward<&Session::handleLogMessageEvent>;
        table.end_of_track = &forward<&Session::handleEndOfTrackEvent>;
        table.streaming_error = &forward<&Session::handleStreamingErrorEvent>;
        table.userinfo_updated = &forward<&Session::handleUserinfoUpdatedEvent>;
        table.offline_status_updated = &forward<&Session::handleOfflineStatusUpdatedEvent>;
        table.offline_error = &forward<&Session::handleOfflineErrorEvent>;
        table.credentials_blob_updated = &forward<&Session::handleCredentialsBlobUpdated>;
        table.show_signup_page = &forward<&Session::handleShowSignupPageEvent>;
        table.show_signup_error_page = &forward<&Session::handleShowSignupErrorPageEvent>;
        table.connect_to_facebook = &forward<&Session::handleConnectToFacebookEvent>;
        table.show_trial_welcome = &forward<&Session::handleShowTrialWelcomeEvent>;
        return table;
    }();
    return callbacks;
}

void Session::handleLoggedInEvent(sp_error error) {
    logger.trace("Session::handleLoggedInEvent");
    dispatch_event("LoggedIn", static_cast<int>(error));
}

void Session::handleLoggedOutEvent() {
    logger.trace("Session::handleLoggedOutEvent");
    dispatch_event("LoggedOut");
}

void Session::handleMetadataUpdatedEvent() {
    logger.trace("Session::handleMetadataUpdatedEvent");
    dispatch_event("MetadataUpdated");
}

void Session::handleConnectionErrorEvent(sp_error error) {
    logger.trace("Session::handleConnectionErrorEvent");
    dispatch_event("ConnectionError", static_cast<int>(error));
}

void Session::handleMessageToUserEvent(const char* message) {
    logger.trace("Session::handleMessageToUserEvent");
    dispatch_event("MessageToUser", message);
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

void Session::handlePlayTokenLostEvent() {
    logger.trace("Session::handlePlayTokenLostEvent");
    dispatch_event("PlayTokenLost");
}

void Session::handleLogMessageEvent(const char* message) {
    logger.trace("Session::handleLogMessageEvent");
    dispatch_event("LogMessage", message);
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

void Session::handleStreamingErrorEvent(sp_error error) {
    logger.trace("Session::handleStreamingErrorEvent");
    dispatch_event("StreamingError", static_cast<int>(error));
}

void Session::handleUserinfoUpdatedEvent() {
    logger.trace("Session::handleUserinfoUpdatedEvent");
    dispatch_event("UserinfoUpdated");
}

void Session::handleOfflineStatusUpdatedEvent() {
    logger.trace("Session::handleOfflineStatusUpdatedEvent");
    dispatch_event("OfflineStatusUpdated");
}

void Session::handleOfflineErrorEvent(sp_error error) {
    logger.trace("Session::handleOfflineErrorEvent");
    dispatch_event("OfflineError", static_cast<int>(error));
}

void Session::handleCredentialsBlobUpdated(const char* blob) {
    logger.trace("Session::handleCredentialsBlobUpdated");
    dispatch_event("CredentialsBlobUpdated", blob);
}

void Session::handleShowSignupPageEvent(sp_signup_page page,
                                        bool loading,
                                        int features,
                                        const char* recentUser) {
    logger.trace("Session::handleShowSignupPageEvent");
    dispatch_event("ShowSignupPage", static_cast<int>(page), loading, features, recentUser);
}

void Session::handleShowSignupErrorPageEvent(sp_signup_page page, sp_error error) {
    logger.trace("Session::handleShowSignupErrorPageEvent");
    dispatch_event("ShowSignupErrorPage", static_cast<int>(page), static_cast<int>(error));
}

// Script takes no part in it.
void Session::handleConnectToFacebookEvent(const char* /*permissions*/) {
    logger.trace("Session::handleConnectToFacebookEvent");
}

void Session::handleShowTrialWelcomeEvent() {
    logger.trace("Session::handleShowTrialWelcomeEvent");
    dispatch_event("ShowTrialWelcome");
}
