#include "Album.h"

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
    : Wrapper(librarySession, album, libraryShare) {
    static const function_row members[] = {
        {"name", &Album::reads<&sp_album_name>, ""},
        {"artist", &Album::reads<&sp_album_artist>, ""},
        {"cover", &Album::reads<&sp_album_cover>, ""},
        {"isLoaded", &Album::reads<&sp_album_is_loaded>, ""},
        {"albumType", &Album::reads<&sp_album_type>, ""},
        {"year", &Album::reads<&sp_album_year>, ""},
        {"isAvailable", &Album::reads<&sp_album_is_available>, ""},
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
    answer(namedBy(link, &sp_link_as_album), context);
}
