#ifndef SONOLET_SERVICE_OBJECTS_ALBUM_H
#define SONOLET_SERVICE_OBJECTS_ALBUM_H

#include "objects/Artist.h"
#include "objects/ImageIds.h"
#include "objects/Library.h"

#include <memory>
#include <string>

namespace sonolet::service {

// An album as the catalogue has it; it reads its row as a Track does, and threads, ownership and
// errors are as there.
class Album : public Handle {
public:
    // For Library::album() alone, which has one handle for each id.
    Album(std::shared_ptr<Library> owner, const Id& albumId);
    ~Album() override;

    const Id& id() const { return link; }

    bool isLoaded();
    // One of its tracks at least is.
    bool isAvailable();
    // Empty, 0 or NULL until it is loaded.
    const std::string& name();
    // 0 when no tag tells.
    int year();
    // SP_ALBUMTYPE_UNKNOWN until it is loaded.
    sp_albumtype type();
    // Borrowed, and the same until the catalogue names another.
    sp_artist* artist();
    // An image id of 20 bytes, which lives as long as this, or NULL for an album without a picture.
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
