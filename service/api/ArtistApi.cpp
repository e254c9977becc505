#include "api/Api.h"
#include "objects/Artist.h"

using namespace sonolet::service;

const char* sp_artist_name(sp_artist* artist) {
    return ask(artist, "", [](Artist& asked) { return asked.name().c_str(); });
}

bool sp_artist_is_loaded(sp_artist* artist) {
    return ask(artist, false, [](Artist& asked) { return asked.isLoaded(); });
}

const byte* sp_artist_portrait(sp_artist* artist, sp_image_size size) {
    return ask<const byte*>(artist, nullptr, [&](Artist& asked) { return asked.portrait(size); });
}

sp_error sp_artist_add_ref(sp_artist* artist) {
    return addRef(artist);
}

sp_error sp_artist_release(sp_artist* artist) {
    return release(artist);
}
