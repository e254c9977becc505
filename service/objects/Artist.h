#ifndef SONOLET_SERVICE_OBJECTS_ARTIST_H
#define SONOLET_SERVICE_OBJECTS_ARTIST_H

#include "objects/ImageIds.h"
#include "objects/Library.h"

#include <memory>
#include <string>

namespace sonolet::service {

// An artist as the catalogue has it; it reads its row as a Track does, and threads, ownership and
// errors are as there. The portrait is the cover of the first album.
class Artist : public Handle {
public:
    // For Library::artist() alone, which has one handle for each id.
    Artist(std::shared_ptr<Library> owner, const Id& artistId);
    ~Artist() override;

    const Id& id() const { return link; }

    // It was in the catalogue at some time.
    bool isLoaded();
    // Empty or NULL until it is loaded. Good until the library's next edition.
    const std::string& name();
    // An image id of 20 bytes, which lives as long as this, or NULL.
    const byte* portrait(sp_image_size size);

private:
    const ArtistRow& row();

    // Constant after construction.
    const std::shared_ptr<Library> library;
    const Id link;

    unsigned edition = 0;
    bool loaded = false;
    ArtistRow known;
    ImageIds portraits;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_artist final : sonolet::service::Artist {  // NOLINT(readability-identifier-naming)
    using Artist::Artist;
};

#endif
