#include "Artist.h"

#include "Session.h"

Artist::Artist() {
    _function("create", &Artist::create, "s");
}

Artist::Artist(sp_session* librarySession,
               sp_artist* artist,
               const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, artist, libraryShare) {
    static const function_row members[] = {
        {"name", &Artist::reads<&sp_artist_name>, ""},
        {"isLoaded", &Artist::reads<&sp_artist_is_loaded>, ""},
        {"portrait", &Artist::reads<&sp_artist_portrait>, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Artist::create(jspp::function_context& context) {
    const std::string link = context.string(0);
    Session::requireLibrarySession();
    answer(namedBy(link, &sp_link_as_artist), context);
}
