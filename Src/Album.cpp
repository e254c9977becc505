#include "Album.h"

#include "Artist.h"
#include "Factory.h"
#include "ImageId.h"
#include "Logger.h"
#include "Session.h"

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Album");

}  // namespace

Album::Album() {
    _function("create", &Album::create, "s");
    logger.trace("Album::Album");
}

Album::Album(sp_session* librarySession,
             sp_album* album,
             const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(album) {
    static const function_row members[] = {
        {"name", &Album::name, ""},
        {"artist", &Album::artist, ""},
        {"cover", &Album::cover, ""},
        {"isLoaded", &Album::isLoaded, ""},
        {"albumType", &Album::albumType, ""},
        {"year", &Album::year, ""},
        {"isAvailable", &Album::isAvailable, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
    logger.trace("Album::Album");
}

Album::~Album() {
    logger.trace("Album::~Album");
}

void Album::create(jspp::function_context& context) {
    logger.trace("Album::create");
    const std::string link = context.string(0);
    Session::requireLibrarySession();
    sp_album* const album = namedBy(link, &sp_link_as_album);
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Album::name(jspp::function_context& context) const {
    context.return_string(sp_album_name(handle.get()));
}

void Album::artist(jspp::function_context& context) const {
    sp_artist* const artist = retrieved(sp_album_artist(handle.get()));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Album::cover(jspp::function_context& context) const {
    const auto size = static_cast<sp_image_size>(context.integer(0));
    returnImageId(sp_album_cover(handle.get(), size), context);
}

void Album::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_album_is_loaded(handle.get()));
}

void Album::albumType(jspp::function_context& context) const {
    context.return_number(sp_album_type(handle.get()));
}

void Album::year(jspp::function_context& context) const {
    context.return_number(sp_album_year(handle.get()));
}

void Album::isAvailable(jspp::function_context& context) const {
    context.return_boolean(sp_album_is_available(handle.get()));
}
