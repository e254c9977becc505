#include "Artist.h"

#include "Factory.h"
#include "ImageId.h"
#include "Session.h"

Artist::Artist() {
    _function("create", &Artist::create, "s");
}

Artist::Artist(sp_session* librarySession,
               sp_artist* artist,
               const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(artist) {
    static const function_row members[] = {
        {"name", &Artist::name, ""},
        {"isLoaded", &Artist::isLoaded, ""},
        {"portrait", &Artist::portrait, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Artist::create(jspp::function_context& context) {
    const std::string link = context.string(0);
    Session::requireLibrarySession();
    sp_artist* const artist = namedBy(link, &sp_link_as_artist);
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Artist::name(jspp::function_context& context) const {
    context.return_string(sp_artist_name(handle.get()));
}

void Artist::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_artist_is_loaded(handle.get()));
}

void Artist::portrait(jspp::function_context& context) const {
    const auto size = static_cast<sp_image_size>(context.integer(0));
    returnImageId(sp_artist_portrait(handle.get(), size), context);
}
