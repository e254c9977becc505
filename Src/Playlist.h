#ifndef SONOLET_PLAYLIST_H
#define SONOLET_PLAYLIST_H

#include "Wrapper.h"
#include "jspp/orvo/shared_ptr.h"

#include <vector>

class Playlistcontainer;
class Playlist;

// A living wrapper and its handle, for libspotify's callbacks.
struct PlaylistInstanceEntry {
    sp_playlist* playlist;
    Playlist* owner;
};

// A playlist, as script sees it: its tracks, its settings, and an event for each of libspotify's
// playlist callbacks, whose first argument is the playlist. Made by Factory. Script thread.
// Ownership: a reference to the handle and one registration of callbacks, both given back at
// logout; its names leave the script object then.
class Playlist final : public Wrapper<sp_playlist>, public orvo::enable_shared_from_this<Playlist> {
public:
    // Tracks that an event brings; see TrackArray.h.
    class track_array;

    // The constructor object of the root.
    Playlist();
    // `madeThrough` is the container that holds it, or empty.
    Playlist(sp_session* librarySession,
             sp_playlist* playlist,
             const orvo::shared_ptr<LibWrapper>& libraryShare,
             const orvo::shared_ptr<Playlistcontainer>& madeThrough);
    ~Playlist() override;

    // Script: a new wrapper for the playlist that a link names. Throws when libspotify knows no
    // such playlist.
    static void create(jspp::function_context& context);

private:
    // Registers the names and, where there is a handle, the callbacks.
    void init();

    // Script functions that are more than one call of libspotify. The image's id in Base64, the
    // empty text without one.
    void getImage(jspp::function_context& context) const;
    // A string_array of canonical names, as they are now.
    void subscribers(jspp::function_context& context) const;
    // The canonical link, 99 characters of it at most; throws while there is none.
    void uri(jspp::function_context& context) const;
    // (Track, position): one track. Answers nothing, whatever libspotify says.
    void addTracks(jspp::function_context& context) const;
    // (index): the link of the track that stands there.
    void placeholderUri(jspp::function_context& context) const;

    JSPP_EVENT_ATTRIBUTE(SubscribersChanged, "SubscribersChanged")
    JSPP_EVENT_ATTRIBUTE(PlaylistRenamed, "PlaylistRenamed")
    JSPP_EVENT_ATTRIBUTE(PlaylistUpdateInProgress, "PlaylistUpdateInProgress")
    JSPP_EVENT_ATTRIBUTE(TracksMoved, "TracksMoved")
    JSPP_EVENT_ATTRIBUTE(DescriptionChanged, "DescriptionChanged")
    JSPP_EVENT_ATTRIBUTE(TrackCreatedChanged, "TrackCreatedChanged")
    JSPP_EVENT_ATTRIBUTE(TracksRemoved, "TracksRemoved")
    JSPP_EVENT_ATTRIBUTE(PlaylistStateChanged, "PlaylistStateChanged")
    JSPP_EVENT_ATTRIBUTE(TrackSeenChanged, "TrackSeenChanged")
    JSPP_EVENT_ATTRIBUTE(TracksAdded, "TracksAddedEvent")
    JSPP_EVENT_ATTRIBUTE(PlaylistMetadataUpdated, "PlaylistMetadataUpdated")
    JSPP_EVENT_ATTRIBUTE(ImageChanged, "ImageChanged")
    JSPP_EVENT_ATTRIBUTE(TrackMessageChanged, "TrackMessageChanged")

    // ---- Handlers of libspotify's callbacks ----
    // Each raises its event with the playlist and, in this order, what it is handed: lists as
    // arrays of their own, which never change, people and tracks as new wrappers, an image's id in
    // Base64, a missing text as the empty one. The arguments are libspotify's, and are copied
    // before the handler returns.
    void handleTracksAddedEvent(sp_track* const* tracks, int count, int position);
    void handleTracksRemovedEvent(const int* positions, int count);
    void handleTracksMovedEvent(const int* positions, int count, int newPosition);
    void handlePlaylistRenamedEvent();
    // Around every change: not done, the change, the state, done.
    void handlePlaylistStateChangedEvent();
    void handlePlaylistUpdateInProgressEvent(bool done);
    void handlePlaylistMetadataUpdatedEvent();
    void handleTrackCreatedChangedEvent(int position, sp_user* user, int when);
    void handleTrackSeenChangedEvent(int position, bool seen);
    void handleDescriptionChangedEvent(const char* text);
    void handleImageChangedEvent(const byte* id);
    void handleTrackMessageChangedEvent(int position, const char* text);
    void handleSubscribersChangedEvent();

    // Finds the living wrapper that a callback means and runs its handler.
    template <auto Handler, class... Arguments>
    static void route(sp_playlist* playlist, Arguments... arguments, void* userData) noexcept;
    static sp_playlist_callbacks libraryCallbacks();

    // Takes the wrapper out of the live instances and away from libspotify's callbacks, too.
    void releaseHandle() noexcept override;

    // Every living wrapper. Read by callbacks, changed by construction and destruction: all on the
    // script thread. Made on first use, never freed.
    static std::vector<PlaylistInstanceEntry>& instances();

    std::size_t place = 0;  // of this wrapper among the instances, while there is a handle
    // Of this wrapper alone, since libspotify takes an address back as often as it was given.
    sp_playlist_callbacks callbacks{};  // libspotify keeps its address
    const orvo::shared_ptr<Playlistcontainer> container;
};

#endif
