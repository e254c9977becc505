#ifndef SONOLET_PLAYLISTCONTAINER_H
#define SONOLET_PLAYLISTCONTAINER_H

#include "Wrapper.h"
#include "jspp/orvo/shared_ptr.h"

#include <vector>

// A user's list of playlists and folders, as script sees it, with an event for each of libspotify's
// container callbacks. Made by Factory, which does not clear it at logout.
//
// Script thread. Ownership: a reference to the handle and one registration of callbacks, both given
// back when the last playlist that came through it has gone, too. A folder is two entries, its
// start and its end, around what is in it.
class Playlistcontainer final : public Wrapper<sp_playlistcontainer>,
                                public orvo::enable_shared_from_this<Playlistcontainer> {
public:
    // Throws when container or session is null.
    Playlistcontainer(sp_session* librarySession,
                      sp_playlistcontainer* playlistcontainer,
                      const orvo::shared_ptr<LibWrapper>& libraryShare);
    ~Playlistcontainer() override;

private:
    // Script functions that are more than one call of libspotify. (index): a Playlist that keeps
    // this container.
    void playlist(jspp::function_context& context) const;
    // (index): 49 bytes of the name at most, and the empty text for what is no folder.
    void playlistFolderName(jspp::function_context& context) const;
    // (Playlist): nothing; whether it was added shows in the events.
    void addPlaylist(jspp::function_context& context) const;

    // Registers the names of the class.
    void addMembers();

    JSPP_EVENT_ATTRIBUTE(PlaylistAdded, "PlaylistAdded")
    JSPP_EVENT_ATTRIBUTE(PlaylistMoved, "PlaylistMoved")
    JSPP_EVENT_ATTRIBUTE(ContainerLoaded, "ContainerLoaded")
    JSPP_EVENT_ATTRIBUTE(PlaylistRemoved, "PlaylistRemoved")

    // ---- Handlers of libspotify's callbacks ----
    // Each raises its event with the container, a new wrapper of the playlist, and the positions.
    void handlePlaylistAddedEvent(sp_playlist* added, int position);
    void handlePlaylistRemovedEvent(sp_playlist* removed, int position);
    void handlePlaylistMovedEvent(sp_playlist* moved, int position, int newPosition);
    void handleContainerLoadedEvent();

    // Finds the living container that a callback means and runs its handler.
    template <auto Handler, class... Arguments>
    static void route(sp_playlistcontainer* from, Arguments... arguments, void* userData) noexcept;
    static sp_playlistcontainer_callbacks& libraryCallbacks();

    // Takes the container off the live ones and away from libspotify's callbacks, too.
    void releaseHandle() noexcept override;

    // Every living container; script thread. Made on first use, never freed.
    static std::vector<Playlistcontainer*>& instances();
};

#endif
