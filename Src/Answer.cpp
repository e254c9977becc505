#include "Answer.h"

#include "Album.h"
#include "Albumbrowse.h"
#include "Artist.h"
#include "Artistbrowse.h"
#include "Factory.h"
#include "ImageId.h"
#include "Playlist.h"
#include "Playlistcontainer.h"
#include "Search.h"
#include "SpImage.h"
#include "Toplistbrowse.h"
#include "Track.h"
#include "User.h"

orvo::shared_ptr<jspp::interface> wrapped(sp_album* handle) {
    return Factory::getInstance().createAlbum(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_albumbrowse* handle) {
    return Factory::getInstance().createAlbumbrowse(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_artist* handle) {
    return Factory::getInstance().createArtist(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_artistbrowse* handle) {
    return Factory::getInstance().createArtistbrowse(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_image* handle) {
    return Factory::getInstance().createSpImage(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_playlist* handle) {
    return Factory::getInstance().createPlaylist(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_playlistcontainer* handle) {
    return Factory::getInstance().createPlaylistcontainer(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_search* handle) {
    return Factory::getInstance().createSearch(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_toplistbrowse* handle) {
    return Factory::getInstance().createToplistbrowse(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_track* handle) {
    return Factory::getInstance().createTrack(handle);
}

orvo::shared_ptr<jspp::interface> wrapped(sp_user* handle) {
    return Factory::getInstance().createUser(handle);
}

void answer(bool flag, jspp::result_context& context) {
    context.return_boolean(flag);
}

void answer(sp_track_availability availability, jspp::result_context& context) {
    context.return_boolean(availability != SP_TRACK_AVAILABILITY_UNAVAILABLE);
}

void answer(const char* text, jspp::result_context& context) {
    context.return_string(text);
}

void answer(const byte* imageId, jspp::result_context& context) {
    context.return_string(imageIdText(retrieved(imageId)));
}
