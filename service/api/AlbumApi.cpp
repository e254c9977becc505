#include "api/Api.h"
#include "objects/Album.h"

using namespace sonolet::service;

bool sp_album_is_loaded(sp_album* album) {
    return ask(album, false, [](Album& asked) { return asked.isLoaded(); });
}

bool sp_album_is_available(sp_album* album) {
    return ask(album, false, [](Album& asked) { return asked.isAvailable(); });
}

sp_artist* sp_album_artist(sp_album* album) {
    return ask<sp_artist*>(album, nullptr, [](Album& asked) { return asked.artist(); });
}

const byte* sp_album_cover(sp_album* album, sp_image_size size) {
    return ask<const byte*>(album, nullptr, [&](Album& asked) { return asked.cover(size); });
}

const char* sp_album_name(sp_album* album) {
    return ask(album, "", [](Album& asked) { return asked.name().c_str(); });
}

int sp_album_year(sp_album* album) {
    return ask(album, 0, [](Album& asked) { return asked.year(); });
}

sp_albumtype sp_album_type(sp_album* album) {
    return ask(album, SP_ALBUMTYPE_UNKNOWN, [](Album& asked) { return asked.type(); });
}

sp_error sp_album_add_ref(sp_album* album) {
    return addRef(album);
}

sp_error sp_album_release(sp_album* album) {
    return release(album);
}
