#include "objects/Artist.h"

#include <utility>

namespace sonolet::service {

Artist::Artist(std::shared_ptr<Library> owner, const Id& artistId)
    : library(std::move(owner)), link(artistId) {}

Artist::~Artist() {
    library->artists.forget(link, this);
}

const ArtistRow& Artist::row() {
    Catalogue* catalogue = library->catalogue();
    if (catalogue == nullptr || edition == library->edition()) {
        return known;
    }
    if (std::optional<ArtistRow> found = catalogue->artist(link)) {
        known = std::move(*found);
        portraits.set(known.portrait);
        loaded = true;
    } else {
        library->ask(SP_LINKTYPE_ARTIST, link);
    }
    edition = library->edition();
    return known;
}

bool Artist::isLoaded() {
    row();
    return loaded;
}

const std::string& Artist::name() {
    return row().name;
}

const byte* Artist::portrait(sp_image_size size) {
    row();
    return portraits.id(size);
}

}  // namespace sonolet::service
