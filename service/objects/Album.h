#ifndef SONOLET_SERVICE_OBJECTS_ALBUM_H
#define SONOLET_SERVICE_OBJECTS_ALBUM_H

#include "objects/Artist.h"
#include "objects/ImageIds.h"
#include "objects/Library.h"

#include <memory>
#include <string>

namespace sonolet::service {

// An album as the catalogue has it; as for Track.
class Album : public Handle {
public:
    Album(std::shared_ptr<Library> owner, const Id& albumId);
    ~Album() override;

    const Id& id() const { return link; }

    bool isLoaded();
    bool isAvailable();
    const std::string& name();
    int year();
    sp_albumtype type();
    sp_artist* artist();
    const byte* cover(sp_image_size size);

private:
    const AlbumRow& row();

    // Constant after construction.
    const std::shared_ptr<Library> library;
    const Id link;

    unsigned edition = 0;
    bool loaded = false;
    AlbumRow known;
    Ref<sp_artist> artistHandle;
    ImageIds covers;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_album final : sonolet::service::Album {  // NOLINT(readability-identifier-naming)
    using Album::Album;
};

#endif
