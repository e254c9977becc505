#ifndef SONOLET_SESSION_H
#define SONOLET_SESSION_H

#include "AudioTrack.h"
#include "Player.h"
#include "Sonolet.h"
#include "jspp/event_dispatcher.h"
#include "jspp/interface.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"

#include "libspotify/api.h"

#include <atomic>
#include <memory>
#include <type_traits>

struct SessionEvent;  // Session.cpp's

// The one session with the music service, as script sees it: account, player and events. It exists
// from start-up and is connected to libspotify when script calls "create".
//
// Threads: script functions, the poll and forceStopPlayback() belong to the script thread; the
// handlers of music_delivery, end_of_track, log_message and notify_main_thread, and
// triggerTrackCompleteEvent(), may be called from any. Events are posted, never delivered from
// inside a callback. Ownership: a share of the libspotify session goes to every wrapper by way
// of the factory, so that it may outlive this object. Errors: each script function throws "Spotify
// is not initialized" before "create" has succeeded; libspotify's own are answered as numbers.
class Session final : public jspp::event_dispatcher<jspp::interface>,
                      public orvo::enable_shared_from_this<Session> {
public:
    explicit Session(const orvo::shared_ptr<Sonolet>& pluginObject);
    ~Session() override;

    // Through it libspotify's callbacks reach the session. Null before and after the session's
    // life.
    static std::atomic<Session*> instance;

    // Runs `body` with the instance, if there is one; the session does not go meanwhile.
    template <class Body>
    static void withInstance(const Body& body) {
        const Visit visit;
        if (Session* const session = instance.load()) {
            body(*session);
        }
    }

    // The libspotify session. Throws the complaint when there is none.
    static sp_session*
    requireLibrarySession(const char* complaint = "Spotify not initialized correctly");

    bool isInitialized() const { return spotifyInitialized; }

    // REQUIRES: isInitialized().
    void processEvents();
    TellusClientNamespace::Player& getPlayer() { return *player; }
    Sonolet& getSonolet() { return *sonolet; }

    // Stops the sound and logs out, because the page goes.
    void forceStopPlayback();

    // The end of the track was played out.
    void triggerTrackCompleteEvent() noexcept;

private:
    // Who is inside withInstance() or answered(), on any thread. The destructor sleeps until
    // everybody has left, but for its own thread: a process may exit from inside a callback.
    class Visit final {
    public:
        Visit() noexcept;
        ~Visit();
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

        static void awaitOthers() noexcept;

    private:
        int& ofThisThread;
    };

    static const sp_session_callbacks& libraryCallbacks();
    // What `body` answers for the instance, 0 without one. What it throws is a line of the log.
    template <class Result, class Body>
    static Result answered(const Body& body) noexcept;
    // A callback with a handler, which it runs on the instance and whose answer is its own.
    template <auto Handler, class... Arguments>
    static std::invoke_result_t<decltype(Handler), Session&, Arguments...>
    forward(sp_session* from, Arguments... arguments) noexcept;
    // A callback that tells itself in the log and raises an event with its arguments.
    template <const SessionEvent& Event, class... Arguments>
    static void tell(sp_session* from, Arguments... arguments) noexcept;

    // Throws what script hears before "create".
    void requireInitialized() const;

    // ---- Script functions ----
    // (SessionConfig): connects to libspotify, and answers the session object; asked again, it
    // answers the object and does nothing. Throws "Failed to initialize libspotify" when libspotify
    // refuses, and nothing is kept then.
    void create(jspp::function_context& context);
    // (): as the remembered user. The error's number; "LoggedIn" follows.
    void relogin(jspp::function_context& context) const;
    // (Track): takes the place of the track before, whose sound ends. libspotify's number, and the
    // backend is started whatever it is. Throws "Could not initialize backend": with the new track
    // in place when the device grants none, with nothing changed inside a call of the backend.
    void playerLoad(jspp::function_context& context);
    // (index): a User; "friend", as script calls it, is a word of the language.
    void friendAt(jspp::function_context& context) const;
    // (): a number each; a country is two letters in one.
    void numFriends(jspp::function_context& context) const;
    void userCountry(jspp::function_context& context) const;
    // (): nothing. What the backend has it plays out.
    void playerUnload(jspp::function_context& context) const;
    // (): the name, null without one.
    void rememberedUser(jspp::function_context& context) const;
    // (Track): libspotify's number.
    void playerPrefetch(jspp::function_context& context) const;
    // (milliseconds): nothing. What is buffered already is heard first.
    void playerSeek(jspp::function_context& context) const;
    // (): nothing. Every living wrapper loses its handle; "LoggedOut" follows.
    void logout(jspp::function_context& context) const;
    // (): the User who is logged in.
    void user(jspp::function_context& context) const;
    // (): a Playlist.
    void inboxCreate(jspp::function_context& context) const;
    // (megabytes): nothing; less than 0 counts as 0, which leaves it to libspotify.
    void setCacheSize(jspp::function_context& context) const;
    // (): libspotify's number.
    void forgetMe(jspp::function_context& context) const;
    // (name): a Playlistcontainer, and a Playlist. An empty name is passed on as it is.
    void publishedContainerForUserCreate(jspp::function_context& context) const;
    void starredForUserCreate(jspp::function_context& context) const;
    // (): a number of sp_connectionstate.
    void connectionstate(jspp::function_context& context) const;
    void starredCreate(jspp::function_context& context) const;
    // (name, password, remember, blob): libspotify's number; "LoggedIn" follows. An empty blob is
    // none. The sound comes in the best quality from here on.
    void login(jspp::function_context& context) const;
    // (on): libspotify's number; the backend plays or pauses whatever it is.
    void playerPlay(jspp::function_context& context);
    // (): the user's own, a new wrapper each time.
    void playlistcontainer(jspp::function_context& context) const;
    // (): a text; (number of sp_signup_action): libspotify's number.
    void signupGetUnacceptedLicenses(jspp::function_context& context) const;
    void signupPerformAction(jspp::function_context& context) const;

    // ---- Event attributes ----
    JSPP_EVENT_ATTRIBUTE(PlayTokenLost, "PlayTokenLost")
    JSPP_EVENT_ATTRIBUTE(LoggedIn, "LoggedIn")
    JSPP_EVENT_ATTRIBUTE(StreamingError, "StreamingError")
    JSPP_EVENT_ATTRIBUTE(ConnectionError, "ConnectionError")
    JSPP_EVENT_ATTRIBUTE(UserinfoUpdated, "UserinfoUpdated")
    JSPP_EVENT_ATTRIBUTE(LoggedOut, "LoggedOut")
    JSPP_EVENT_ATTRIBUTE(LogMessage, "LogMessage")
    JSPP_EVENT_ATTRIBUTE(MessageToUser, "MessageToUser")
    JSPP_EVENT_ATTRIBUTE(EndOfTrack, "EndOfTrack")
    // The attribute and its event are spelled differently.
    JSPP_EVENT_ATTRIBUTE(MetaDataUpdated, "MetadataUpdated")
    JSPP_EVENT_ATTRIBUTE(CredentialsBlobUpdated, "CredentialsBlobUpdated")
    JSPP_EVENT_ATTRIBUTE(ShowTrialWelcome, "ShowTrialWelcome")

    // ---- Handlers of the callbacks that do more; the others are tell()'s ----
    void handleNotifyMainThreadEvent();
    int handleMusicDeliveryEvent(const sp_audioformat* format, const void* frames, int numFrames);
    void handleEndOfTrackEvent();
    // Not yet what is heard: the backend plays what it has.
    void triggerEndOfTrackEvent();
    void handleConnectToFacebookEvent(const char* permissions);

    const orvo::shared_ptr<Sonolet> sonolet;

    // Script thread only.
    sp_session* session = nullptr;  // owned by the LibWrapper that create() makes
    bool spotifyInitialized = false;
    int nextTimeout = 0;  // milliseconds; what libspotify asks for, and the fixed poll ignores

    // The library's thread fills the track, unless it is just being replaced: what is delivered
    // then is refused, and comes again. Only the script thread replaces it.
    orvo::Mutex trackMutex;
    std::unique_ptr<TellusClientNamespace::AudioTrack> currentTrack ORVO_GUARDED_BY(trackMutex);
    bool isReplacingTrack ORVO_GUARDED_BY(trackMutex) = false;

    // After the track: the player lets it go before it goes.
    std::unique_ptr<TellusClientNamespace::Player> player;
};

#endif
