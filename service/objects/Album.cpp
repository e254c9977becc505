#include "objects/Album.h"

#include <utility>

namespace sonolet::service {

Album::Album(std::shared_ptr<Library> owner, const Id& albumId)
    : library(std::move(owner)), link(albumId) {
    known.type = SP_ALBUMTYPE_UNKNOWN;
}

Album::~Album() {
    library->albums.forget(link, this);
}

const AlbumRow& Album::row() {
    Catalogue* catalogue = library->catalogue();
    if (catalogue == nullptr || edition == library->edition()) {
        return known;
    }
    if (std::optional<AlbumRow> found = catalogue->album(link)) {
        known = std::move(*found);
        artistHandle = library->artist(known.artist);
        covers.set(known.cover);
        loaded = true;
    } else {
        known.available = false;
        library->ask(SP_LINKTYPE_ALBUM, link);
    }
    edition = library->edition();
    return known;
}

bool Album::isLoaded() {
    row();
    return loaded;
}

bool Album::isAvailable() {
    return row().available;
}

const std::string& Album::name() {
    return row().name;
}

int Album::year() {
    return row().year;
}

sp_albumtype Album::type() {
    if (row().type == SP_ALBUMTYPE_UNKNOWN && loaded) {
        // A track was seen that is on it, and nothing more.
        library->ask(SP_LINKTYPE_ALBUM, link);
    }
    return static_cast<sp_albumtype>(known.type);
}

sp_artist* Album::artist() {
    row();
    return artistHandle.get();
}

const byte* Album::cover(sp_image_size size) {
    row();
    return covers.id(size);
}

}  // namespace sonolet::service
