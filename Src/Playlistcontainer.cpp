#include "Playlistcontainer.h"

#include "Factory.h"
#include "Logger.h"
#include "Playlist.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Playlistcontainer");

}  // namespace

std::vector<Playlistcontainer*>& Playlistcontainer::instances() {
    static auto& living = *new std::vector<Playlistcontainer*>;
    return living;
}

Playlistcontainer::Playlistcontainer(sp_session* librarySession,
                                     sp_playlistcontainer* playlistcontainer,
                                     const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, nullptr, libraryShare) {
    logger.trace("Playlistcontainer::Playlistcontainer", "Initializing playlistcontainer");
    if (librarySession) {
        handle.hold(playlistcontainer);
    }
    if (!handle) {
        throw std::runtime_error("Invalid spotify object given when creating this object");
    }
    addMembers();
    // Last: a constructor that throws leaves no callback behind.
    instances().push_back(this);
    sp_playlistcontainer_add_callbacks(playlistcontainer, &libraryCallbacks(), this);
}

void Playlistcontainer::addMembers() {
    static const function_row members[] = {
        {"playlist", &Playlistcontainer::playlist, "n"},
        {"playlistType", &Playlistcontainer::reads<&sp_playlistcontainer_playlist_type>, "n"},
        {"numPlaylists", &Playlistcontainer::reads<&sp_playlistcontainer_num_playlists>, ""},
        {"playlistFolderName", &Playlistcontainer::playlistFolderName, "n"},
        {"isLoaded", &Playlistcontainer::reads<&sp_playlistcontainer_is_loaded>, ""},
        {"playlistFolderId", &Playlistcontainer::reads<&sp_playlistcontainer_playlist_folder_id>,
         "n"},
        {"owner", &Playlistcontainer::reads<&sp_playlistcontainer_owner>, ""},
        {"addPlaylist", &Playlistcontainer::addPlaylist, "o"},
        {"release", &Playlistcontainer::release, ""},
    };
    static const attribute_row events[] = {
        JSPP_EVENT_ROW(Playlistcontainer, PlaylistAdded),
        // Read-only, unlike the others: its listeners come through "addEventListener" alone.
        {"onPlaylistMoved", &Playlistcontainer::_evt_get_PlaylistMoved, {}},
        JSPP_EVENT_ROW(Playlistcontainer, ContainerLoaded),
        JSPP_EVENT_ROW(Playlistcontainer, PlaylistRemoved),
    };
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), members, events);
    _class(names);
    loseNamesAtLogout();
}

Playlistcontainer::~Playlistcontainer() {
    releaseHandle();
    logger.trace("Playlistcontainer::~Playlistcontainer", "Destroying playlist container");
}

void Playlistcontainer::releaseHandle() noexcept {
    if (!handle) {
        return;
    }
    std::vector<Playlistcontainer*>& living = instances();
    living.erase(std::find(living.begin(), living.end(), this));
    sp_playlistcontainer_remove_callbacks(handle.get(), &libraryCallbacks(), this);
    handle.release();
}

// ---- Script functions ----

void Playlistcontainer::playlist(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_playlist* const found = retrieved(sp_playlistcontainer_playlist(handle.get(), index));
    context.return_interface(Factory::getInstance().createPlaylist(shared_from_this(), found),
                             false);
}

void Playlistcontainer::playlistFolderName(jspp::function_context& context) const {
    const int index = context.integer(0);
    // Stays empty for what is no folder.
    std::array<char, 50> name{};
    sp_playlistcontainer_playlist_folder_name(handle.get(), index, name.data(),
                                              static_cast<int>(name.size()));
    name.back() = '\0';
    context.return_string(name.data());
}

void Playlistcontainer::addPlaylist(jspp::function_context& context) const {
    const orvo::shared_ptr<Playlist> added = context.interface_of<Playlist>(0);
    sp_playlistcontainer* const to = handle.get();
    const Created<sp_link> link(retrieved(sp_link_create_from_playlist(added->getHandle())));
    // The outcome shows in the events.
    sp_playlistcontainer_add_playlist(to, link.get());
}

// ---- libspotify's callbacks ----

template <auto Handler, class... Arguments>
void Playlistcontainer::route(sp_playlistcontainer*,
                              Arguments... arguments,
                              void* userData) noexcept {
    const auto found = std::find(instances().begin(), instances().end(), userData);
    if (found == instances().end()) {
        return;
    }
    try {
        // Nothing that the handler does takes the container away from under it.
        const orvo::shared_ptr<Playlistcontainer> container = (*found)->shared_from_this();
        if (container) {
            (container.get()->*Handler)(arguments...);
        }
    } catch (...) {
        logger.error("Playlistcontainer::route", ": out of memory, an event is lost");
    }
}

sp_playlistcontainer_callbacks& Playlistcontainer::libraryCallbacks() {
    static sp_playlistcontainer_callbacks callbacks{
        &route<&Playlistcontainer::handlePlaylistAddedEvent, sp_playlist*, int>,
        &route<&Playlistcontainer::handlePlaylistRemovedEvent, sp_playlist*, int>,
        &route<&Playlistcontainer::handlePlaylistMovedEvent, sp_playlist*, int, int>,
        &route<&Playlistcontainer::handleContainerLoadedEvent>,
    };
    return callbacks;
}

void Playlistcontainer::handlePlaylistAddedEvent(sp_playlist* added, int position) {
    logger.trace("Playlistcontainer::handlePlaylistAddedEvent");
    dispatch_event("PlaylistAdded", shared_from_this(),
                   Factory::getInstance().createPlaylist(added), position);
}

void Playlistcontainer::handlePlaylistRemovedEvent(sp_playlist* removed, int position) {
    logger.trace("Playlistcontainer::handlePlaylistRemovedEvent");
    dispatch_event("PlaylistRemoved", shared_from_this(),
                   Factory::getInstance().createPlaylist(removed), position);
}

void Playlistcontainer::handlePlaylistMovedEvent(sp_playlist* moved,
                                                 int position,
                                                 int newPosition) {
    logger.trace("Playlistcontainer::handlePlaylistMovedEvent");
    dispatch_event("PlaylistMoved", shared_from_this(),
                   Factory::getInstance().createPlaylist(moved), position, newPosition);
}

void Playlistcontainer::handleContainerLoadedEvent() {
    logger.trace("Playlistcontainer::handleContainerLoadedEvent");
    dispatch_event("ContainerLoaded", shared_from_this());
}
